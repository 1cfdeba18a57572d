// SPDX-License-Identifier: MIT
#include "ui/FieldGrid.h"

#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tav {

namespace {

/// How wide a field must be to show \a text; the two letters more are for its frame.
int textWidth(const QWidget* field, const QString& text)
{
    return field->fontMetrics().horizontalAdvance(text + "MM");
}

} // namespace

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
    field->setAccessibleName(QString(label).remove(':').remove(QChar(0xff1a))); // and that of Chinese texts
    field->setMinimumWidth(textWidth(field, beside ? "0000000000" : "firstname.lastname@example.com"));
    if (const auto* edit = qobject_cast<QLineEdit*>(field))
        field->setMinimumWidth(qMax(field->minimumWidth(), textWidth(field, edit->placeholderText())));
}

void removeBlanksFrom(QLineEdit* field)
{
    QObject::connect(field, &QLineEdit::textChanged, field, [field](QString text) {
        const auto isBlank = [](QChar c) { return c.isSpace() || !c.isPrint(); };
        const auto* const rest = std::remove_if(text.begin(), text.end(), isBlank);
        if (rest == text.end())
            return;
        text.truncate(int(rest - text.begin()));
        field->setText(text);
    });
}

void layOut(QDialog* dialog, FieldGrid* rows, QPushButton* proceed, QPushButton* leave)
{
    proceed->setDefault(true);
    // Wide enough for a window with its title.
    rows->setColumnMinimumWidth(1, textWidth(dialog, "0000000000000000"));
    rows->setColumnStretch(1, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(proceed);
    if (leave)
        buttons->addWidget(leave);

    auto* layout = new QVBoxLayout(dialog);
    layout->addLayout(rows);
    layout->addStretch();
    layout->addLayout(buttons);
}

} // namespace tav
