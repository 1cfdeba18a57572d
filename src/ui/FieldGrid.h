// SPDX-License-Identifier: MIT
#pragma once

#include <QGridLayout>

class QDialog;
class QLineEdit;
class QPushButton;

namespace tav {

/// Two columns: labels on the left, what they belong to on the right.
class FieldGrid : public QGridLayout
{
public:
    using QGridLayout::QGridLayout;

    /// A row whose label is the buddy of \a content. \a beside stands to the right of it.
    void addRow(const QString& label, QWidget* content, QWidget* beside = nullptr);

    /// A row of something to fill in, which screen readers call by its label: wide enough for an e-mail
    /// address, or for a code when there is something beside it.
    void addField(const QString& label, QWidget* field, QWidget* beside = nullptr);
};

/// Takes out the blanks and line breaks that come with a text when it is pasted: for codes.
void takeNoBlanks(QLineEdit* field);

/// The rows of a small dialog above its buttons, of which Enter presses \a proceed.
/// \param leave null for a dialog that is left by its title bar or Escape only
void layOut(QDialog* dialog, FieldGrid* rows, QPushButton* proceed, QPushButton* leave);

} // namespace tav
