// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

/// A line that lies on a window's contents, at the bottom, for as long as it lives. The window owns it.
class WindowNote : public QLabel
{
public:
    /// \param window where to show it
    /// \param text shown as it is, never as rich text, and cut when it is too long for the window
    WindowNote(QWidget* window, const QString& text);
};
