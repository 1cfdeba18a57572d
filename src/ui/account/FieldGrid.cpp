// SPDX-License-Identifier: MIT
#include "ui/account/FieldGrid.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

void FieldGrid::addRow(const QString& label, QWidget* content, QWidget* beside)
{
    auto* caption = new QLabel(label);
    caption->setBuddy(content);

    auto* contents = new QHBoxLayout;
    contents->addWidget(content, 1);
    if (beside)
        contents->addWidget(beside);

    const int row = rowCount();
    addWidget(caption, row, 0);
    addLayout(contents, row, 1);
}

void FieldGrid::addField(const QString& label, QWidget* field, QWidget* beside)
{
    addRow(label, field, beside);
    field->setAccessibleName(QString(label).remove(':'));
}

void layOut(QDialog* dialog, FieldGrid* rows, QPushButton* proceed, QPushButton* leave)
{
    proceed->setDefault(true);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(proceed);
    buttons->addWidget(leave);

    auto* layout = new QVBoxLayout(dialog);
    layout->addLayout(rows);
    layout->addStretch();
    layout->addLayout(buttons);
}
