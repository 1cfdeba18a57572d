// SPDX-License-Identifier: MIT
#pragma once

#include <QScrollArea>

class QGridLayout;
class QVBoxLayout;

namespace tav {

/// The scroll area of the tiles. Instead of a widget with the tiles in it, it scrolls its own layout, and
/// hides the tiles that are out of view, so that thousands of them cost little.
class TileArea : public QScrollArea
{
    Q_OBJECT

public:
    /// \param tiles the grid, which goes to the top left of the area
    TileArea(QGridLayout* tiles, QWidget* parent);

    void addTile(QWidget* tile, int row, int column);
    /// The text that the area shows while the grid is empty.
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
    /// The place of a tile at the present scroll position; a hidden tile may not have been moved there yet.
    QRect placeOf(int index) const;
    /// The index in the grid of the tile that contains \a widget; -1 if none does.
    int indexOf(const QWidget* widget) const;
    void revealFocus(QWidget* focused);

    QGridLayout* grid;
    ScrolledLayout* layer;
    QString textWhenEmpty;
    bool arranging = false;
    bool scrolling = false;
};

} // namespace tav
