// SPDX-License-Identifier: MIT
#pragma once

#include <QLineEdit>
#include <QMessageBox>
#include <QString>

/// The words that the dialogs' slots share. A box speaks for the window it belongs to, so its title comes
/// from the translations of that window's class.

inline constexpr char promptTitle[] = "Prompt";
inline constexpr char errorTitle[] = "error";

/// Shows a box with an OK button and waits for the answer. \a text is shown as it is, never as rich text: the
/// platform may have written it. False when \a window was destroyed meanwhile.
bool showBox(QMessageBox::Icon icon, QWidget* window, const QString& title, const QString& text);

/// Guidance or success. False when \a window was destroyed meanwhile.
template <class Window>
bool inform(Window* window, const QString& text)
{
    return showBox(QMessageBox::Information, window, Window::tr(promptTitle), text);
}

/// What the platform would not do. False when \a window was destroyed meanwhile.
template <class Window>
bool fail(Window* window, const QString& text)
{
    return showBox(QMessageBox::Critical, window, Window::tr(errorTitle), text);
}

/// Whether there is a text in \a field. When not, says \a complaint and leads the user there.
template <class Window>
bool filled(Window* window, QLineEdit* field, const QString& complaint)
{
    if (!field->text().isEmpty())
        return true;
    if (inform(window, complaint))
        field->setFocus();
    return false;
}
