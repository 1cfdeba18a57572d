// SPDX-License-Identifier: MIT
#pragma once

#include <QKeyEvent>
#include <QPushButton>

/// \file
/// In the tabs of the cloud space Enter presses what has the focus, and never a button elsewhere that the
/// dialog takes for its default.

namespace tav {

/// Whether it is one of the two keys that mean Enter.
inline bool isEnter(const QKeyEvent* event)
{
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

/// Keeps the dialog from making a button of \a tab its default.
inline void leaveEnterTo(const QWidget* tab)
{
    for (QPushButton* button : tab->findChildren<QPushButton*>())
        button->setAutoDefault(false);
}

/// Presses the button that has the focus in \a tab.
inline void pressFocused(const QWidget* tab)
{
    if (auto* button = qobject_cast<QPushButton*>(tab->window()->focusWidget()))
        button->click();
}

} // namespace tav
