// SPDX-License-Identifier: MIT
#pragma once

#include <QScrollArea>

class QGridLayout;
class QVBoxLayout;

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
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;

private:
    class ScrolledLayout;

    void fitMinimumHeight();
    void arrange();
    void scroll();
    void revealFocus(QWidget* focused);

    QGridLayout* grid;
    ScrolledLayout* layer;
    QString textWhenEmpty;
    bool arranging = false;
    bool scrolling = false;
};
