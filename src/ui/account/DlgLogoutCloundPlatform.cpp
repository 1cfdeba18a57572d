// SPDX-License-Identifier: MIT
#include "ui/account/DlgLogoutCloundPlatform.h"

#include "core/Screen.h"
#include "ui/account/Conclusion.h"
#include "ui/account/FieldGrid.h"

#include <QLabel>
#include <QPushButton>

namespace {

QLabel* valueLabel(const QString& text)
{
    auto* label = new QLabel;
    // The platform chose the name: it is text and no markup, and may be of any length.
    label->setTextFormat(Qt::PlainText);
    label->setText(label->fontMetrics().elidedText(text, Qt::ElideMiddle, int(dpi_scaled(360.0))));
    label->setToolTip(text.toHtmlEscaped());
    return label;
}

} // namespace

DlgLogoutCloundPlatform::DlgLogoutCloundPlatform(QWidget* parent)
    : Dialog(parent)
    , logoutButton(new QPushButton(tr("Logout"), this))
{
    setWindowTitle(tr("User login status"));
    auto* closeButton = new QPushButton(tr("Close Window"), this);

    auto* fields = new FieldGrid;
    fields->addRow(tr("User name"), valueLabel(CloudAccountLogin::instance()->getUserName()));
    fields->addRow(tr("State"), valueLabel(tr("Logged-in")));
    layOut(this, fields, logoutButton, closeButton);

    connect(logoutButton, &QPushButton::clicked, this, &DlgLogoutCloundPlatform::_logout);
    connect(closeButton, &QPushButton::clicked, this, &QDialog::reject);
}

void DlgLogoutCloundPlatform::_logout()
{
    const Outcome outcome =
        callPlatform(this, tr("Signing out..."), [] { return CloudAccountLogin::instance()->logout(); });
    conclude(this, outcome, tr("exit successfully!"));
}
