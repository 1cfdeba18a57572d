// SPDX-License-Identifier: MIT
#include "ui/WindowNote.h"

WindowNote::WindowNote(QWidget* window, const QString& text)
    : QLabel(window)
{
    // The colours of a tooltip belong together in every palette.
    setForegroundRole(QPalette::ToolTipText);
    setBackgroundRole(QPalette::ToolTipBase);
    setAutoFillBackground(true);
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    const int room = fontMetrics().height();
    setMargin(room / 3);
    setTextFormat(Qt::PlainText);
    setText(fontMetrics().elidedText(text, Qt::ElideMiddle, window->width() - 3 * room));
    adjustSize();
    move((window->width() - width()) / 2, window->height() - height() - room / 2);
    show();
    raise();
}
