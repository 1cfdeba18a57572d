// SPDX-License-Identifier: MIT
#pragma once

class QDialog;
class RecordTable;

/// Makes \a dialog as wide as its \a table needs: for the headers of its columns in any case, for what is in
/// them now as far as the screen has room for it.
void resizeToColumns(QDialog* dialog, RecordTable* table);
