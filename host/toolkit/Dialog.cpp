// SPDX-License-Identifier: MIT
#include "toolkit/Dialog.h"

Dialog::Dialog(QWidget* parent)
    : QDialog(parent)
{
    setModal(true);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}
