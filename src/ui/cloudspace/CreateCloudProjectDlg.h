// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/Dialog.h"

#include <QString>

class QLineEdit;

/// Asks for the name and the description of a new cloud project.
class CreateCloudProjectDlg : public Dialog
{
    Q_OBJECT

public:
    explicit CreateCloudProjectDlg(QWidget* parent);

    QString name() const;
    QString description() const;

private slots:
    void _onWhetherNull();

private:
    QLineEdit* nameEdit;
    QLineEdit* descriptionEdit;
};
