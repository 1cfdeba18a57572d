// SPDX-License-Identifier: MIT
#include "ui/Translation.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QLocale>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

class TestTranslation : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { installCloudPlatformTranslation(QLocale::c()); }

    /// lupdate marks in a copy what only the sources have and what only the catalogue has.
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
        QFile file(copy);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString catalogue = file.readAll();
        const QRegularExpression translated(
            "<message>.*?<source>(.*?)</source>.*?<translation>(.+?)</translation>",
            QRegularExpression::DotMatchesEverythingOption);
        int messages = 0;
        for (auto i = translated.globalMatch(catalogue); i.hasNext(); ++messages) {
            const QRegularExpressionMatch message = i.next();
            const bool whole = message.captured().count("<message") == 1;
            QVERIFY2(whole && message.captured(1).count('%') == message.captured(2).count('%'),
                qPrintable(message.captured()));
        }
        QVERIFY(messages >= 60 && messages == catalogue.count("<message"));
    }

    void isInstalledForALocale()
    {
        const QString chinese = "登录";
        const QPair<QString, QString> rows[]{
            {"zh_CN", chinese}, {"zh_Hans_SG", chinese}, {"zh_TW", "Login"}, {"en_GB", "Login"}};
        for (const auto& [locale, text] : rows)
            for (int round = 0; round < 2; ++round) { // then over one that is installed already
                QCOMPARE(installCloudPlatformTranslation(QLocale(locale)), text == chinese);
                QCOMPARE(QCoreApplication::translate("DlgLoginCloundPlatform", "Login"), text);
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
