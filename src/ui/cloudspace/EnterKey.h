// SPDX-License-Identifier: MIT
#pragma once

#include <QKeyEvent>
#include <QPushButton>

namespace tav {

/// In the tabs of the cloud space Enter presses what has the focus, and never a button elsewhere that the
/// dialog takes for its default.
inline bool isEnter(const QKeyEvent* event)
{
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

/// Takes the buttons of \a tab out of the dialog's hands.
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
