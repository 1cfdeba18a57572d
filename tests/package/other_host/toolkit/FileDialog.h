// SPDX-License-Identifier: MIT
#pragma once

#include <QFileDialog>

struct ISystemSettings;

namespace FileDialog {
QString getOpenFileName(ISystemSettings* settings, QWidget* parent, const QString& caption,
    const QString& directory, const QString& filter, QString* selectedFilter, QFileDialog::Options options);
QString getExistingDirectory(ISystemSettings* settings, QWidget* parent, const QString& caption,
    const QString& directory, QFileDialog::Options options);
} // namespace FileDialog
