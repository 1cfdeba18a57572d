// SPDX-License-Identifier: MIT
#pragma once

#include <QTableWidget>

class QDialog;

namespace tav {

/// A read-only table of records from the platform, one to a row. While it is empty it shows a text instead.
class RecordTable : public QTableWidget
{
    Q_OBJECT

public:
    /// \param columns the headers; an empty first one is for a column of check boxes
    /// \param emptyText what the table shows while it has no rows
    RecordTable(const QStringList& columns, const QString& emptyText, QWidget* parent = nullptr);

    void setEmptyText(const QString& text);
    /// Adds a row of centred texts, one for each column but that of the check boxes.
    /// \param box a check box for the first column, named after the first text
    void addRecord(const QStringList& texts, QWidget* box = nullptr);
    /// Makes the columns fit what is in them now, as far as there is room: long texts are shortened first,
    /// then the headers, then the other texts.
    void fitColumns();
    /// Makes \a dialog wide enough for the headers of the columns and for texts of usual length.
    void widen(QDialog* dialog);
    /// The whole text of a cell, even where the table elides it.
    QString text(int row, int column) const { return item(row, column)->text(); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    int headerWidth(int column) const;
    /// The room that a column has beside its texts, in pixels.
    int padding() const { return fontMetrics().height(); }

    QString textWhenEmpty;
};

} // namespace tav
