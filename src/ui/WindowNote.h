// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

namespace tav {

/// A few lines that lie on a window's contents, at the bottom, for as long as they live. Cut when they are
/// too long, and shown as they are, never as rich text.
class WindowNote : public QLabel
{
    Q_OBJECT

public:
    /// \param owner owns it
    /// \param over which child of \a owner it lies on; all of \a owner by default
    WindowNote(QWidget* owner, const QString& text, QWidget* over = nullptr);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void place();

    QString all;
    QWidget* ground;
};

} // namespace tav
