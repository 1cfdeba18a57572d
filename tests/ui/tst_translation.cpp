// SPDX-License-Identifier: MIT
#include "ui/Translation.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QXmlStreamReader>

namespace {

QString shown(const char* context, const char* text)
{
    return QCoreApplication::translate(context, text);
}

/// Every message of a catalogue that is not fully translated, and how many there are in all.
QStringList faults(const QString& path, int& messages)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {"cannot read " + path};
    QStringList found;
    QString source;
    QXmlStreamReader xml(&file);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == "source")
            source = xml.readElementText();
        if (xml.name() != "translation")
            continue;
        ++messages;
        const QString state = xml.attributes().value("type").toString();
        const QString translation = xml.readElementText();
        const bool sameNumbers = translation.count('%') == source.count('%');
        if (!state.isEmpty() || translation.isEmpty() || !sameNumbers)
            found.append(QStringLiteral("%1 (%2)").arg(source, state));
    }
    if (xml.hasError())
        found.append(xml.errorString());
    return found;
}

} // namespace

class TestTranslation : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { installCloudPlatformTranslation(QLocale::c()); }

    /// lupdate marks in a copy what the sources have and the catalogue has not, and the other way round.
    void theCatalogueIsComplete()
    {
        const QTemporaryDir scratch;
        const QString copy = scratch.filePath("copy.ts");
        QVERIFY(QFile::copy(TAV_CATALOGUE, copy));
        QProcess lupdate;
        lupdate.start(TAV_LUPDATE, {"-silent", "-locations", "none", TAV_SOURCE_DIR, "-ts", copy});
        QVERIFY(lupdate.waitForFinished());
        QCOMPARE(lupdate.exitCode(), 0);
        QCOMPARE(QString::fromUtf8(lupdate.readAllStandardError()), QString());
        int messages = 0;
        const QStringList wrong = faults(copy, messages);
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join(", ")));
        QVERIFY(messages >= 60);
    }

    void isInstalledForALocale_data()
    {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<bool>("chinese");
        QTest::newRow("China") << QLocale("zh_CN") << true;
        QTest::newRow("Singapore") << QLocale("zh_Hans_SG") << true;
        QTest::newRow("Taiwan") << QLocale("zh_TW") << false;
        QTest::newRow("English") << QLocale("en_GB") << false;
        QTest::newRow("none") << QLocale::c() << false;
    }

    void isInstalledForALocale()
    {
        QFETCH(QLocale, locale);
        QFETCH(bool, chinese);
        // Also over one that is installed already.
        for (int round = 0; round < 2; ++round) {
            QCOMPARE(installCloudPlatformTranslation(locale), chinese);
            QCOMPARE(shown("DlgLoginCloundPlatform", "Login"),
                chinese ? QString::fromUtf8("登录") : QString("Login"));
            QCOMPARE(
                shown("MessageBoxes", "Prompt"), chinese ? QString::fromUtf8("提示") : QString("Prompt"));
            installCloudPlatformTranslation(QLocale("zh_CN"));
        }
    }

    void theIconsAreSharpOnEveryScreen()
    {
        const QMap<QString, int> sizes{{"eye", 16}, {"closed_eye", 16}, {"200", 32}, {"201", 32}, {"202", 32},
            {"folder", 70}, {"file", 70}};
        for (const QString& name : sizes.keys())
            for (const int scale : {1, 2, 3}) {
                const QString suffix = scale == 1 ? QString() : QStringLiteral("@%1x").arg(scale);
                const QImage icon(":/tav_cloud_platform_sdk/Resources/" + name + suffix + ".png");
                QCOMPARE(icon.size(), scale * QSize(sizes[name], sizes[name]));
            }
    }
};

QTEST_MAIN(TestTranslation)
#include "tst_translation.moc"
