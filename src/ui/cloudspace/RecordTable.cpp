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
#include <QScrollBar>

#include <numeric>

RecordTable::RecordTable(const QStringList& columns, const QString& emptyText, QWidget* parent)
    : QTableWidget(0, columns.size(), parent)
    , textWhenEmpty(emptyText)
{
    setHorizontalHeaderLabels(columns);
    horizontalHeader()->setStyleSheet("QHeaderView::section{border:none;}");
    horizontalHeader()->setHighlightSections(false);
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
    QVector<int> widths, least;
    for (int column = 0; column < columnCount(); ++column) {
        least.append(horizontalHeader()->sectionSizeHint(column) + padding());
        widths.append(qBound(least.last(), sizeHintForColumn(column) + padding(), qMax(least.last(), room)));
    }
    for (int excess = std::accumulate(widths.cbegin(), widths.cend(), 0) - room; excess > 0; --excess) {
        int widest = -1;
        for (int column = 0; column < columnCount(); ++column)
            if (widths[column] > least[column] && (widest < 0 || widths[column] > widths[widest]))
                widest = column;
        if (widest < 0)
            break;
        --widths[widest];
    }
    for (int column = 0; column < columnCount(); ++column)
        setColumnWidth(column, widths[column]);
}

void RecordTable::widen(QDialog* dialog)
{
    constexpr int usualLetters = 80;
    int width = usualLetters * fontMetrics().averageCharWidth();
    int headers = 0;
    for (int column = 0; column < columnCount(); ++column)
        headers += horizontalHeader()->sectionSizeHint(column) + padding();
    const QMargins margins = dialog->layout()->contentsMargins();
    width = qMax(width, headers + verticalScrollBar()->sizeHint().width()) + 2 * frameWidth() + margins.left()
        + margins.right();
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
