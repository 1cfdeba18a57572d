// SPDX-License-Identifier: MIT
#pragma once

#include <QScrollArea>

class QGridLayout;
class QVBoxLayout;

namespace tav {

/// The scroll area of the tiles. Its layout is its own, without a widget to scroll: it moves the layout
/// instead, and keeps the tiles that cannot be seen hidden, so that thousands of them cost nothing.
class TileArea : public QScrollArea
{
    Q_OBJECT

public:
    /// \param tiles the grid, which goes to the top left of the area
    TileArea(QGridLayout* tiles, QWidget* parent);

    void addTile(QWidget* tile, int row, int column);
    /// What stands in the area while the grid is empty.
    void setEmptyText(const QString& text);
    void scrollToTop();
    /// Gives the first tile the focus, or the area when it is empty.
    void focusFirst();

    bool event(QEvent* event) override;

protected:
    /// The arrow keys, Home and End lead from tile to tile.
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    class ScrolledLayout;

    void fitMinimumHeight();
    void arrange();
    void scroll();
    /// Where a tile is, as far as the area has been scrolled; one that is hidden may not have gone there yet.
    QRect placeOf(int index) const;
    /// The number in the grid of the tile that has \a widget; -1 when it is no tile.
    int indexOf(const QWidget* widget) const;
    void revealFocus(QWidget* focused);

    QGridLayout* grid;
    ScrolledLayout* layer;
    QString textWhenEmpty;
    bool arranging = false;
    bool scrolling = false;
};

} // namespace tav
