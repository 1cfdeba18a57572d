// SPDX-License-Identifier: MIT
#pragma once

#include "toolkit/tav_host_toolkit_export.h"

#include <QFileDialog>
#include <QString>

class ISystemSettings;

/// The host's file dialogs. They open in the directory given or, when that is empty, where the user last was,
/// and remember where the answer lies.
///
/// GUI thread only; both block in an event loop until the user has answered. The parent may be destroyed
/// meanwhile: the answer is then empty. \a settings may be null: then nothing is looked up or remembered.
class TAV_HOST_TOOLKIT_EXPORT FileDialog
{
public:
    FileDialog() = delete;

    /// Asks for an existing file.
    /// \param directory where to start, or a file to preselect
    /// \param filter name filters separated by ";;", as QFileDialog has them
    /// \param selectedFilter the filter to start with; receives the one the user chose; may be null
    /// \return its path, or an empty text when the user cancelled
    static QString getOpenFileName(ISystemSettings* settings, QWidget* parent, const QString& caption,
        const QString& directory, const QString& filter, QString* selectedFilter = nullptr,
        QFileDialog::Options options = {});

    /// Asks for an existing directory.
    /// \return its path, or an empty text when the user cancelled
    static QString getExistingDirectory(ISystemSettings* settings, QWidget* parent, const QString& caption,
        const QString& directory, QFileDialog::Options options = QFileDialog::ShowDirsOnly);
};
