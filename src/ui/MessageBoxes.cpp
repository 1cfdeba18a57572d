// SPDX-License-Identifier: MIT
#include "ui/MessageBoxes.h"

#include <QPointer>

namespace {

/// The catalogue's entries for the titles: lupdate cannot see in which classes the templates use them.
[[maybe_unused]] const char* const titles[] = {
    QT_TRANSLATE_NOOP("DlgLoginCloundPlatform", "Prompt"),
    QT_TRANSLATE_NOOP("DlgLoginCloundPlatform", "error"),
    QT_TRANSLATE_NOOP("DlgLogoutCloundPlatform", "Prompt"),
    QT_TRANSLATE_NOOP("DlgLogoutCloundPlatform", "error"),
    QT_TRANSLATE_NOOP("DlgRegisterR2V", "Prompt"),
    QT_TRANSLATE_NOOP("DlgResetPassword", "Prompt"),
    QT_TRANSLATE_NOOP("DlgResetPassword", "error"),
    QT_TRANSLATE_NOOP("PhoneLoginWidget", "Prompt"),
};

} // namespace

bool showBox(QMessageBox::Icon icon, QWidget* window, const QString& title, const QString& text)
{
    const QPointer<QWidget> owner(window);
    // On the heap, because the box goes when its window goes.
    const QPointer<QMessageBox> box(new QMessageBox(icon, title, text, QMessageBox::Ok, window));
    box->setTextFormat(Qt::PlainText);
    box->exec();
    delete box;
    return owner;
}
