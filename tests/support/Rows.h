// SPDX-License-Identifier: MIT
#pragma once

#include "support/Robot.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QLineEdit>
#include <QTest>

/// \file
/// What a window shows in its table or tree and in its fields, and clicks on the rows.

/// The visible table or tree; null when there is none.
inline QAbstractItemView* viewIn(const QWidget& window)
{
    for (auto* view : window.findChildren<QAbstractItemView*>())
        if (view->isVisibleTo(&window))
            return view;
    return nullptr;
}

inline QModelIndex indexOf(const QAbstractItemModel& model, const QString& text)
{
    QModelIndexList found;
    for (int column = 0; column < model.columnCount() && found.isEmpty(); ++column)
        found = model.match(model.index(0, column), Qt::DisplayRole, text, 1,
            Qt::MatchExactly | Qt::MatchCaseSensitive | Qt::MatchRecursive);
    return found.value(0);
}

inline QStringList rowsBelow(const QModelIndex& parent, const QAbstractItemView& view, const QString& indent)
{
    const QAbstractItemModel& model = *view.model();
    QStringList rows;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        QStringList texts;
        for (int column = 0; column < model.columnCount(parent); ++column) {
            const QModelIndex cell = model.index(row, column, parent);
            const QWidget* widget = view.indexWidget(cell);
            const auto* check = widget ? widget->findChild<QCheckBox*>() : nullptr;
            texts.append(!check ? cell.data().toString() : check->isChecked() ? "[x]" : "[ ]");
        }
        rows << indent + texts.join(" | ") << rowsBelow(model.index(row, 0, parent), view, indent + "  ");
    }
    return rows;
}

/// All rows, a text for each: its columns, indented by its depth in a tree.
inline QStringList rowsOf(const QWidget& window)
{
    return rowsBelow({}, *viewIn(window), {});
}

/// Clicks the row that has \a text in a column.
inline void clickRow(const QWidget& window, const QString& text)
{
    QAbstractItemView* view = viewIn(window);
    const QModelIndex index = indexOf(*view->model(), text);
    QVERIFY2(index.isValid(), qPrintable(text));
    view->scrollTo(index);
    robot::click(*view->viewport(), view->visualRect(index).center());
}

/// The texts of the fields, with a ">" before the one with the focus and a "!" before disabled ones.
inline QString fieldsOf(const QWidget& window)
{
    QStringList texts;
    for (const auto* one : window.findChildren<QLineEdit*>())
        texts.append((one == window.focusWidget() ? ">" : "") + QString(one->isEnabled() ? "" : "!")
            + one->text() + one->placeholderText());
    return texts.join(", ");
}
