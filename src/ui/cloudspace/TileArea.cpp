// SPDX-License-Identifier: MIT
#include "ui/cloudspace/TileArea.h"

#include "core/Screen.h"

#include <QApplication>
#include <QGridLayout>
#include <QPainter>
#include <QScopedValueRollback>
#include <QScreen>
#include <QScrollBar>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace tav {

namespace {
constexpr char barStyle[] = "QScrollBar{background:#ececec;border:none;}"
                            "QScrollBar:vertical{width:14px;}"
                            "QScrollBar:horizontal{height:14px;}"
                            "QScrollBar::handle{background:#a8a8a8;border-radius:4px;margin:3px;}"
                            "QScrollBar::handle:hover{background:#808080;}"
                            "QScrollBar::handle:vertical{min-height:30px;}"
                            "QScrollBar::handle:horizontal{min-width:30px;}"
                            "QScrollBar::add-line,QScrollBar::sub-line{width:0;height:0;}"
                            "QScrollBar::add-page,QScrollBar::sub-page{background:none;}";
} // namespace

/// A layout that gets its rectangle from place(), not from the size of the area.
class TileArea::ScrolledLayout : public QVBoxLayout
{
public:
    explicit ScrolledLayout(TileArea* owner)
        : area(owner)
    {
    }
    void setGeometry(const QRect&) override { area->arrange(); }
    void place(const QRect& rect) { QVBoxLayout::setGeometry(rect); }
    /// A tile that is shown or hidden by scrolling changes nothing.
    void invalidate() override
    {
        if (!area->scrolling)
            QVBoxLayout::invalidate();
    }

private:
    TileArea* area;
};

TileArea::TileArea(QGridLayout* tiles, QWidget* parent)
    : QScrollArea(parent)
    , grid(tiles)
    , layer(new ScrolledLayout(this))
{
    fitMinimumHeight();
    setStyleSheet("background-color:#ffffff;");
    setFrameShape(NoFrame);
    // The area's white background would make the style's own scroll bars invisible.
    for (QScrollBar* bar : {horizontalScrollBar(), verticalScrollBar()})
        bar->setStyleSheet(barStyle);
    auto* row = new QHBoxLayout;
    row->addLayout(grid);
    row->addStretch();
    layer->addLayout(row);
    layer->addStretch();
    setLayout(layer);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { revealFocus(now); });
}

/// Room for three rows of tiles; less on a small screen, which needs room for the rest of the window.
void TileArea::fitMinimumHeight()
{
    const int available = screen()->availableGeometry().height();
    const bool isSmall = available < int(dpi_scaled(570.0));
    setMinimumHeight(isSmall ? available - int(dpi_scaled(220.0)) : int(dpi_scaled(500.0)));
}

void TileArea::addTile(QWidget* tile, int row, int column)
{
    QSizePolicy keepsPlace = tile->sizePolicy();
    keepsPlace.setRetainSizeWhenHidden(true);
    tile->setSizePolicy(keepsPlace);
    if (isVisible()) // until it is known whether it is in view
        tile->hide();
    grid->addWidget(tile, row, column);
}

void TileArea::setEmptyText(const QString& text)
{
    textWhenEmpty = text;
    viewport()->update();
}

void TileArea::scrollToTop()
{
    verticalScrollBar()->setValue(0);
    horizontalScrollBar()->setValue(0);
}

void TileArea::focusFirst()
{
    layer->activate(); // a tile that is not shown yet takes no focus
    if (grid->count() > 0)
        grid->itemAt(0)->widget()->setFocus();
    else
        setFocus();
}

/// The wheel events of a tile come here and not to the viewport.
bool TileArea::event(QEvent* event)
{
    if (event->type() != QEvent::Wheel)
        return QScrollArea::event(event);
    wheelEvent(static_cast<QWheelEvent*>(event));
    return event->isAccepted();
}

void TileArea::keyPressEvent(QKeyEvent* event)
{
    const int last = grid->count() - 1;
    const int index = indexOf(QApplication::focusWidget());
    int wanted = 0;
    switch (event->key()) {
    case Qt::Key_Left:
        wanted = index - 1;
        break;
    case Qt::Key_Right:
        wanted = index + 1;
        break;
    case Qt::Key_Up:
        wanted = index - grid->columnCount();
        break;
    case Qt::Key_Down:
        wanted = index + grid->columnCount();
        break;
    case Qt::Key_Home:
        wanted = 0;
        break;
    case Qt::Key_End:
        wanted = last;
        break;
    default:
        return QScrollArea::keyPressEvent(event);
    }
    if (index < 0) // no tile has the focus
        return QScrollArea::keyPressEvent(event);
    // One that is scrolled far away is hidden, and takes no focus until it is shown.
    if (wanted >= 0 && wanted <= last && wanted != index) {
        QWidget* tile = grid->itemAt(wanted)->widget();
        {
            const QScopedValueRollback<bool> guard(scrolling, true);
            tile->show();
        }
        tile->setFocus();
    }
}

void TileArea::paintEvent(QPaintEvent* event)
{
    QScrollArea::paintEvent(event);
    if (grid->count() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(Qt::darkGray); // on the area's white, whatever the palette
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, textWhenEmpty);
}

void TileArea::showEvent(QShowEvent* event)
{
    fitMinimumHeight(); // the screen is known now
    QScrollArea::showEvent(event);
}

void TileArea::resizeEvent(QResizeEvent* event)
{
    QScrollArea::resizeEvent(event);
    arrange();
}

void TileArea::scrollContentsBy(int, int)
{
    if (!arranging)
        scroll();
}

void TileArea::arrange()
{
    if (arranging) // by a scroll bar that has come or gone
        return;
    const QScopedValueRollback<bool> guard(arranging, true);
    const QSize needed = layer->minimumSize();
    const int step = grid->count() > 0 ? grid->itemAt(0)->sizeHint().height() / 2 : 1;
    // Twice, because a scroll bar that comes takes room from the other direction.
    for (int round = 0; round < 2; ++round) {
        horizontalScrollBar()->setRange(0, needed.width() - viewport()->width());
        verticalScrollBar()->setRange(0, needed.height() - viewport()->height());
    }
    horizontalScrollBar()->setPageStep(viewport()->width());
    verticalScrollBar()->setPageStep(viewport()->height());
    horizontalScrollBar()->setSingleStep(step);
    verticalScrollBar()->setSingleStep(step);
    layer->place(QRect(viewport()->pos(), needed.expandedTo(viewport()->size())));
    scroll();
}

/// Moves the tiles that are in view from where the layout has them, and hides the others. The layout itself
/// stays as it is: it would go through all tiles again.
void TileArea::scroll()
{
    const QScopedValueRollback<bool> guard(scrolling, true);
    const QWidget* focused = QApplication::focusWidget();
    for (int i = 0; i < grid->count(); ++i) {
        QWidget* tile = grid->itemAt(i)->widget();
        const QRect place = placeOf(i);
        // A row more on each side: the keyboard goes there next.
        const QRect near = viewport()->geometry().adjusted(0, -2 * place.height(), 0, 2 * place.height());
        // The tile with the focus keeps it when it is scrolled away.
        const bool shown = near.intersects(place) || tile->isAncestorOf(focused);
        if (shown)
            tile->setGeometry(place);
        tile->setVisible(shown);
    }
    // Above the tiles that are half outside.
    horizontalScrollBar()->parentWidget()->raise();
}

QRect TileArea::placeOf(int index) const
{
    int row, column, rows, columns;
    grid->getItemPosition(index, &row, &column, &rows, &columns);
    return grid->cellRect(row, column)
        .translated(-horizontalScrollBar()->value(), -verticalScrollBar()->value());
}

int TileArea::indexOf(const QWidget* widget) const
{
    int index = grid->count();
    while (--index >= 0 && !grid->itemAt(index)->widget()->isAncestorOf(widget)) { }
    return index;
}

void TileArea::revealFocus(QWidget* focused)
{
    const int index = focused && isAncestorOf(focused) ? indexOf(focused) : -1;
    if (index < 0)
        return;
    const QRect place = placeOf(index);
    const QRect view = viewport()->geometry();
    if (place.top() < view.top())
        verticalScrollBar()->setValue(verticalScrollBar()->value() - (view.top() - place.top()));
    else if (place.bottom() > view.bottom())
        verticalScrollBar()->setValue(verticalScrollBar()->value() + place.bottom() - view.bottom());
}

} // namespace tav
