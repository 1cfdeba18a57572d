// SPDX-License-Identifier: MIT
#include "ui/cloudspace/RecordTable.h"

#include "core/Screen.h"
#include "ui/ElidedLabel.h"

#include <QCheckBox>
#include <QDialog>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLayout>
#include <QPainter>
#include <QScreen>

#include <numeric>

namespace tav {

namespace {

constexpr int letters = 30; ///< that should be seen of a long text

/// Narrows the widest of \a widths, but not below \a least, until together they fit \a room.
void narrow(QVector<int>& widths, const QVector<int>& least, int room)
{
    for (int excess = std::accumulate(widths.cbegin(), widths.cend(), 0) - room; excess > 0; --excess) {
        int widest = -1;
        for (int i = 0; i < widths.size(); ++i)
            if (widths[i] > least[i] && (widest < 0 || widths[i] > widths[widest]))
                widest = i;
        if (widest < 0)
            return;
        --widths[widest];
    }
}

} // namespace

RecordTable::RecordTable(const QStringList& columns, const QString& emptyText, QWidget* parent)
    : QTableWidget(0, columns.size(), parent)
    , textWhenEmpty(emptyText)
{
    setHorizontalHeaderLabels(columns);
    horizontalHeader()->setStyleSheet("QHeaderView::section{border:none;}");
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setTextElideMode(Qt::ElideMiddle);
    verticalHeader()->hide();
    setEditTriggers(NoEditTriggers);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setTabKeyNavigation(false);
    setHorizontalScrollMode(ScrollPerPixel);
    horizontalHeader()->setStretchLastSection(true);
}

void RecordTable::setEmptyText(const QString& text)
{
    textWhenEmpty = text;
    viewport()->update();
}

void RecordTable::addRecord(const QStringList& texts, QWidget* box)
{
    const int row = rowCount();
    insertRow(row);
    int column = 0;
    if (box) {
        auto* check = box->findChild<QCheckBox*>();
        check->setAccessibleName(texts.first());
        check->setFocusPolicy(Qt::NoFocus); // the row has it, and Space there is a click on the row
        setCellWidget(row, column++, box);
    }
    for (const QString& text : texts) {
        auto* cell = new QTableWidgetItem(text);
        cell->setTextAlignment(Qt::AlignCenter);
        cell->setToolTip(plainToolTip(text));
        setItem(row, column++, cell);
    }
}

void RecordTable::fitColumns()
{
    const int room = viewport()->width();
    const int readable = letters * fontMetrics().averageCharWidth();
    QVector<int> widths, withHeaders, withTexts, least;
    for (int column = 0; column < columnCount(); ++column) {
        const int header = headerWidth(column);
        const int text = sizeHintForColumn(column) + padding();
        widths.append(qMax(header, qMin(text, room)));
        withHeaders.append(qMax(header, qMin(text, readable)));
        withTexts.append(qMax(header / 2, qMin(text, readable)));
        least.append(header / 2);
    }
    for (const QVector<int>& limits : {withHeaders, withTexts, least})
        narrow(widths, limits, room);
    for (int column = 0; column < columnCount(); ++column)
        setColumnWidth(column, widths[column]);
}

int RecordTable::headerWidth(int column) const
{
    return horizontalHeader()->sectionSizeHint(column) + padding();
}

void RecordTable::widen(QDialog* dialog)
{
    const QMargins margins = dialog->layout()->contentsMargins();
    int width =
        letters * fontMetrics().averageCharWidth() + 2 * frameWidth() + margins.left() + margins.right();
    for (int column = 0; column < columnCount(); ++column)
        width += headerWidth(column);
    width = qMin(width, dialog->screen()->availableGeometry().width() * 9 / 10);
    dialog->resize(qMax(width, int(dpi_scaled(520.0))), int(dpi_scaled(320.0)));
}

void RecordTable::resizeEvent(QResizeEvent* event)
{
    QTableWidget::resizeEvent(event);
    fitColumns();
}

/// Space is a click on the row that has the focus.
void RecordTable::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space && currentRow() >= 0)
        emit cellClicked(currentRow(), qMax(currentColumn(), 0));
    else
        QTableWidget::keyPressEvent(event);
}

void RecordTable::paintEvent(QPaintEvent* event)
{
    QTableWidget::paintEvent(event);
    if (rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, textWhenEmpty);
}

} // namespace tav
