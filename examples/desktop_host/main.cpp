// SPDX-License-Identifier: MIT
// A host with windows: a list of drawings that go to the user's cloud space and are converted.
#include "MainWindow.h"
#include "Settings.h"
#include "ui/Translation.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLibraryInfo>
#include <QLocale>
#include <QTimer>
#include <QTranslator>

namespace {

/// The module's texts, this program's own, and those of Qt, which speaks in the buttons of message boxes.
/// Before the first window: texts are taken when it is built.
void speak(const QLocale& locale)
{
    QLocale::setDefault(locale);
    installCloudPlatformTranslation(locale);
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    const QString inQt = QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    const QString inQt = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
    for (const auto& [name, folder] :
        {std::pair<QString, QString>("qtbase", inQt), {"tav-desktop-host", ":/tav-desktop-host"}}) {
        auto* translator = new QTranslator(qApp);
        if (translator->load(locale, name, "_", folder))
            QCoreApplication::installTranslator(translator);
    }
}

} // namespace

int main(int argc, char* argv[])
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0) // which needs no asking
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    QApplication application(argc, argv);
    QApplication::setWindowIcon(QIcon(":/tav-desktop-host/icon.png"));
    QGuiApplication::setDesktopFileName("tav-desktop-host");

    QCommandLineParser parser;
    parser.setApplicationDescription("Backs drawings up to the cloud and converts them.");
    parser.addHelpOption();
    const QCommandLineOption languageOption(
        "language", "Speak this language, \"zh_CN\" or \"en\", instead of the system's.", "locale");
    parser.addOption(languageOption);
    parser.addPositionalArgument("drawings", "What to have in the list.", "[DRAWING...]");
    parser.process(application);

    speak(parser.isSet(languageOption) ? QLocale(parser.value(languageOption)) : QLocale::system());
    Settings settings; // outlives every window
    pSystemSettings = &settings;
    MainWindow window;
    window.restoreGeometry(settings.mainWindow());
    window.show();
    // Once the window is up: what it has to tell stands in front of it.
    QTimer::singleShot(0, &window, [&] { window.addDrawings(parser.positionalArguments()); });
    const int result = QApplication::exec();
    settings.setMainWindow(window.saveGeometry());
    return result;
}
