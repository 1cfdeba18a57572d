// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

namespace tav {

/// A few lines of text over the bottom of a window's contents, for as long as the note lives. A text that is
/// too long is elided; it is shown as it is, never as rich text.
class WindowNote : public QLabel
{
    Q_OBJECT

public:
    /// \param owner owns it
    /// \param over the child of \a owner that it covers; by default \a owner itself
    WindowNote(QWidget* owner, const QString& text, QWidget* over = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();

    QString wholeText;
    QWidget* covered;
};

} // namespace tav
