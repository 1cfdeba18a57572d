// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudHandle.h"

#include "toolkit/Dialog.h"

#include <QMap>
#include <QString>

class MycheckBox;

namespace tav {
class RecordTable;
} // namespace tav

/// Lets the user choose the cloud project that a shared file goes into, or add one.
class ChoiceCloudProjectDlg : public Dialog
{
    Q_OBJECT

public:
    /// Asks the platform for the projects once it is shown.
    /// \param manager What the user confirms becomes its current project.
    /// \param chosen receives the project that the user checks; must outlive the dialog
    /// \param projectName, projectId the current project, where the arrow keys start
    ChoiceCloudProjectDlg(CloudFileManger* manager, CloudFileManger::ShareProjectInfo* chosen,
        QString projectName, QString projectId, QWidget* parent);

private slots:
    void _onChangCBoxCheck(int row);
    void _onOpenCreateCloudProjectDlg();
    void _onWhetherNull();
    void _onCheckChange(int row);

private:
    void loadFirst();
    void chooseSelected();
    bool load();
    void showProjects();
    int rowOf(int column, const QString& text) const;

    tav::CloudHandle client;
    CloudFileManger::ShareProjectInfo* chosenProject;
    QString currentName;
    QString currentId;
    QString chosenId;
    tav::RecordTable* table;
    QMap<int, MycheckBox*> boxes;
};
