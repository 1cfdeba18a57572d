// SPDX-License-Identifier: MIT
#pragma once

#include <QMessageBox>
#include <QString>

/// \file
/// Message boxes that block, for the steps of the dialogs' slots.

namespace tav {

/// Shows a box and waits for the answer. Texts are shown as they are, never as rich text: the platform may
/// have written them. False when \a window was closed or destroyed meanwhile.
/// \param button the text of its one button; empty for Qt's own OK
/// \param more what helps to understand \a text, below it; empty for nothing
bool showBox(QMessageBox::Icon icon, QWidget* window, const QString& title, const QString& text,
    const QString& button = QString(), const QString& more = QString());

/// Shows a box with a \a code in its \a text, and waits for the answer. The text can be selected, and Ctrl+C
/// without a selection copies the code. False when \a window was closed or destroyed meanwhile.
bool showCode(QWidget* window, const QString& title, const QString& text, const QString& code);

/// Shows a box with two buttons, of which Enter and Escape press the second, and waits for the answer.
/// Whether the user pressed the first; false as well when \a window was closed or destroyed meanwhile.
/// \param proceed, cancel the texts of the buttons; empty for Qt's own OK and Cancel
/// \param more as for showBox()
bool askBox(QMessageBox::Icon icon, QWidget* window, const QString& title, const QString& text,
    const QString& proceed = QString(), const QString& cancel = QString(), const QString& more = QString());

} // namespace tav
