// SPDX-License-Identifier: MIT
// Uses the installed package as a host does. Nothing listens at the address, so each answer is known.
#include "account/CloudAccountLogin.h"
#include "cloud/CloudFileManger.h"
#include "tav_cloud_platform_sdk_version.h"

#include <QCoreApplication>
#include <QDebug>

static_assert(TAV_CLOUD_PLATFORM_SDK_VERSION >= TAV_CLOUD_PLATFORM_SDK_MAKE_VERSION(1, 0, 0));

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    CloudAccountLogin* session = CloudAccountLogin::instance();
    CloudFileManger client("http://127.0.0.1:1", "token", "", "Consumer", {"Consumer"}, ".bak", "Survey", "");

    const bool good = session == CloudAccountLogin::instance() && session->getUrl().startsWith("http")
        && !session->getLoginState() && !session->logout() && client.getLastError().isEmpty()
        && !client.getAllCloudProjectBackup() && client.getLastError() == QStringLiteral("返回值解析失败");
    qInfo() << (good ? "good" : "not as documented:") << client.getLastError();
    return good ? 0 : 1;
}
