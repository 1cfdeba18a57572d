// SPDX-License-Identifier: MIT
#include "ui/cloudspace/RecordTable.h"

#include "core/Screen.h"
#include "ui/ElidedLabel.h"

#include <QCheckBox>
#include <QDialog>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

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
    fitColumns();
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
    // A name of any length leaves room for the others; the last column takes what is left.
    QHeaderView* header = horizontalHeader();
    header->setStretchLastSection(false);
    header->setMaximumSectionSize(fontMetrics().averageCharWidth() * 30);
    resizeColumnsToContents();
    for (int column = 0; column < columnCount(); ++column)
        setColumnWidth(column, columnWidth(column) + padding());
    header->setMaximumSectionSize(-1);
    header->setStretchLastSection(true);
}

void RecordTable::widen(QDialog* dialog)
{
    setSizeAdjustPolicy(AdjustToContents);
    const QHeaderView* header = horizontalHeader();
    const int wanted = dialog->sizeHint().width();
    int atLeast = wanted - header->length();
    for (int column = 0; column < header->count(); ++column)
        atLeast += header->sectionSizeHint(column) + padding();
    const int preferred = qMin(wanted, dialog->screen()->availableGeometry().width() * 9 / 10);
    dialog->resize(qMax(preferred, qMax(atLeast, int(dpi_scaled(520.0)))), int(dpi_scaled(320.0)));
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
