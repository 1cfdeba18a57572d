// SPDX-License-Identifier: MIT
#include "ui/account/DlgLogoutCloundPlatform.h"

#include "core/Screen.h"
#include "ui/ElidedLabel.h"
#include "ui/FieldGrid.h"
#include "ui/Steps.h"

#include <QPushButton>

using namespace tav;

DlgLogoutCloundPlatform::DlgLogoutCloundPlatform(QWidget* parent)
    : Dialog(parent)
{
    setWindowTitle(tr("User login status"));
    auto* logoutButton = new QPushButton(tr("Logout"), this);
    auto* closeButton = new QPushButton(tr("Close Window"), this);

    auto* fields = new FieldGrid;
    fields->addRow(tr("User name"),
        new ElidedLabel(CloudAccountLogin::instance()->getUserName(), int(dpi_scaled(360.0))));
    fields->addRow(tr("State"), new QLabel(tr("Logged-in")));
    layOut(this, fields, logoutButton, closeButton);

    connect(logoutButton, &QPushButton::clicked, this, &DlgLogoutCloundPlatform::_logout);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::reject);
}

void DlgLogoutCloundPlatform::_logout()
{
    const Answer answer =
        ask(this, tr("Signing out..."), [](CloudAccountLogin& session) { return session.logout(); });
    conclude(this, answer, tr("exit successfully!"));
}
