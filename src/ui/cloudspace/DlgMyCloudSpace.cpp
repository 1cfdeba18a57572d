// SPDX-License-Identifier: MIT
#include "ui/cloudspace/DlgMyCloudSpace.h"

#include "cloud/CloudHandle.h"
#include "ui/BlockingCall.h"
#include "ui/cloudspace/CloudShareTabWidget.h"
#include "ui/cloudspace/CloudSpaceTabWidget.h"

#include <QGridLayout>
#include <QGuiApplication>
#include <QTabWidget>

#include <optional>

using namespace tav;

DlgMyCloudSpace::DlgMyCloudSpace(CloudFileManger* manager, QMap<QString, QString> fileTypeMap,
    QString ownAccount, QString fourth, QWidget* parent)
    : Dialog(parent)
{
    const CloudHandle client = handleOn(manager);
    const BuiltApart apart(this);
    // This window is not on the screen yet while the platform is asked: its parent shows the wait.
    std::optional<Waiting> waiting;
    if (parent && parent->isVisible())
        waiting.emplace(parent, tr("Loading the cloud space..."));
    resize(600, 400);
    setWindowTitle(tr("Cloud space"));
    QClipboard* clipboard = QGuiApplication::clipboard();

    browser = new CloudSpaceTabWidget(client.get(), clipboard, this);
    // The tab takes the last two texts the other way round.
    auto* share = new CloudShareTabWidget(client.get(), client->getProjectName(), client->getProjectId(),
        fileTypeMap, clipboard, fourth, ownAccount, this);
    auto* tabs = new QTabWidget;
    tabs->addTab(browser, tr("My cloud space"));
    tabs->addTab(share, tr("Share"));
    (new QGridLayout(this))->addWidget(tabs);
    connect(share, &CloudShareTabWidget::refreshMyCloudSpace, this, &DlgMyCloudSpace::_onRefreshMyCloudSpace);
}

DlgMyCloudSpace::~DlgMyCloudSpace() = default;

void DlgMyCloudSpace::_onRefreshMyCloudSpace()
{
    browser->_onRefresh();
}
