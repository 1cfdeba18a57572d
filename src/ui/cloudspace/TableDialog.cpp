// SPDX-License-Identifier: MIT
#include "ui/cloudspace/TableDialog.h"

#include "core/Screen.h"
#include "ui/cloudspace/RecordTable.h"

#include <QDialog>
#include <QHeaderView>
#include <QScreen>

void resizeToColumns(QDialog* dialog, RecordTable* table)
{
    table->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    const QHeaderView* header = table->horizontalHeader();
    const int wanted = dialog->sizeHint().width();
    int atLeast = wanted - header->length();
    for (int column = 0; column < header->count(); ++column)
        atLeast += header->sectionSizeHint(column) + table->padding();
    const int width = qMin(wanted, dialog->screen()->availableGeometry().width() * 9 / 10);
    dialog->resize(qMax(width, qMax(atLeast, int(dpi_scaled(520.0)))), int(dpi_scaled(320.0)));
}
