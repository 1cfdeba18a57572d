// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

class Dialog : public QDialog
{
public:
    explicit Dialog(QWidget* parent);
};
