// SPDX-License-Identifier: MIT
#include "ui/Translation.h"

#include <QCoreApplication>
#include <QLocale>
#include <QPointer>
#include <QTranslator>

namespace {

/// The one installed translator. It reads from memory of this library, so it must not outlive it.
struct Installed
{
    ~Installed() { delete translator; }
    QPointer<QTranslator> translator;
};

QString catalogueFor(const QLocale& locale)
{
    // By the script, so that every country that writes Simplified Chinese has it.
    return locale.language() == QLocale::Chinese && locale.script() == QLocale::SimplifiedHanScript
        ? QStringLiteral(":/tav_cloud_platform_sdk/translations/tav_cloud_platform_sdk_zh_CN.qm")
        : QString();
}

} // namespace

bool installCloudPlatformTranslation(const QLocale& locale)
{
    static Installed installed;
    delete installed.translator;
    const QString catalogue = catalogueFor(locale);
    if (catalogue.isEmpty())
        return false;
    installed.translator = new QTranslator(qApp);
    return installed.translator->load(catalogue) && QCoreApplication::installTranslator(installed.translator);
}
