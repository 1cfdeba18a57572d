// SPDX-License-Identifier: MIT
#include "ui/WindowNote.h"

#include "ui/ElidedLabel.h"

#include <QEvent>

namespace tav {

namespace {
constexpr int maximumLines = 3;
} // namespace

WindowNote::WindowNote(QWidget* owner, const QString& text, QWidget* over)
    : QLabel(owner)
    , wholeText(QString(text).replace('\n', ' '))
    , covered(over ? over : owner)
{
    // The colours of a tooltip belong together in every palette.
    setForegroundRole(QPalette::ToolTipText);
    setBackgroundRole(QPalette::ToolTipBase);
    setAutoFillBackground(true);
    setFrameStyle(QFrame::Box | QFrame::Plain);
    setTextFormat(Qt::PlainText);
    setToolTip(plainToolTip(text));
    setMargin(fontMetrics().height() / 3);
    place();
    show();
    covered->installEventFilter(this);
}

bool WindowNote::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        place();
    return QLabel::eventFilter(watched, event);
}

void WindowNote::place()
{
    const QRect room = covered == parentWidget() ? covered->rect() : covered->geometry();
    const int gap = fontMetrics().height();
    setText(fittingLines(wholeText, font(), room.width() - 3 * gap, maximumLines).join('\n'));
    adjustSize();
    move(room.center().x() - width() / 2, room.bottom() - height() - gap / 2);
    raise();
}

} // namespace tav
