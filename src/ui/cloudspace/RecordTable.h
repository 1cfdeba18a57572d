// SPDX-License-Identifier: MIT
#pragma once

#include <QTableWidget>

class QDialog;

namespace tav {

/// A table of records from the platform, one to a row, to be read and not edited. An empty one says so.
class RecordTable : public QTableWidget
{
    Q_OBJECT

public:
    /// \param columns the headers; an empty one is that of a column of check boxes, the first
    /// \param emptyText what stands in the table while it has no rows
    RecordTable(const QStringList& columns, const QString& emptyText, QWidget* parent = nullptr);

    void setEmptyText(const QString& text);
    /// Adds a row of centred texts; their number is that of the columns, less the one of \a box.
    /// \param box a check box for the first column, named after the first text
    void addRecord(const QStringList& texts, QWidget* box = nullptr);
    /// Makes the columns fit what is in them now, as far as there is room: long texts give way first, then
    /// the headers, then the other texts.
    void fitColumns();
    /// Makes \a dialog wide enough for the headers of the columns and for texts of usual length.
    void widen(QDialog* dialog);
    /// A cell's text, all of it where the table shows less.
    QString text(int row, int column) const { return item(row, column)->text(); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    int headerWidth(int column) const;
    /// What a column has more than its texts need.
    int padding() const { return fontMetrics().height(); }

    QString textWhenEmpty;
};

} // namespace tav
