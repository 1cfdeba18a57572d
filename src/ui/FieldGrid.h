// SPDX-License-Identifier: MIT
#pragma once

#include <QGridLayout>

class QDialog;
class QLineEdit;
class QPushButton;

namespace tav {

/// A form of two columns: labels on the left, the widgets that they name on the right.
class FieldGrid : public QGridLayout
{
public:
    using QGridLayout::QGridLayout;

    /// Adds a row with a label, whose buddy is \a content, and \a beside to the right of that.
    void addRow(const QString& label, QWidget* content, QWidget* beside = nullptr);

    /// Adds a row with an input field, whose accessible name is the label: wide enough for an e-mail address,
    /// or for a code when there is something beside it.
    void addField(const QString& label, QWidget* field, QWidget* beside = nullptr);
};

/// Removes blanks and line breaks from what is typed or pasted into \a field: for codes.
void removeBlanksFrom(QLineEdit* field);

/// Lays out a small dialog: \a rows above its buttons. Enter presses \a proceed.
/// \param leave the button that cancels; null for a dialog that is left by its title bar or Escape only
void layOut(QDialog* dialog, FieldGrid* rows, QPushButton* proceed, QPushButton* leave);

} // namespace tav
