// SPDX-License-Identifier: MIT
#include "toolkit/FileDialog.h"

#include "toolkit/ISystemSettings.h"

#include <QFileInfo>
#include <QPointer>

namespace {

/// On the heap, because the parent may be destroyed while it is open. Qt's static functions keep theirs on
/// the stack, where it would be destroyed twice.
QPointer<QFileDialog> newDialog(ISystemSettings* settings, QWidget* parent, const QString& caption,
    const QString& directory, const QString& filter, QFileDialog::FileMode mode, QFileDialog::Options options)
{
    const QString start = directory.isEmpty() && settings ? settings->lastDirectory() : directory;
    QPointer<QFileDialog> dialog(new QFileDialog(parent, caption, start, filter));
    // In this order: setFileMode() resets ShowDirsOnly.
    dialog->setFileMode(mode);
    dialog->setOptions(options);
    return dialog;
}

/// What the user chose; empty when there is nothing.
QString answerTo(const QPointer<QFileDialog>& dialog)
{
    const bool accepted = dialog->exec() == QDialog::Accepted;
    return dialog && accepted ? dialog->selectedFiles().value(0) : QString();
}

} // namespace

QString FileDialog::getOpenFileName(ISystemSettings* settings, QWidget* parent, const QString& caption,
    const QString& directory, const QString& filter, QString* selectedFilter, QFileDialog::Options options)
{
    const QPointer<QFileDialog> dialog =
        newDialog(settings, parent, caption, directory, filter, QFileDialog::ExistingFile, options);
    if (selectedFilter && !selectedFilter->isEmpty())
        dialog->selectNameFilter(*selectedFilter);
    QString file = answerTo(dialog);
    if (!file.isEmpty() && selectedFilter)
        *selectedFilter = dialog->selectedNameFilter();
    delete dialog;
    if (!file.isEmpty() && settings)
        settings->setLastDirectory(QFileInfo(file).absolutePath());
    return file;
}

QString FileDialog::getExistingDirectory(ISystemSettings* settings, QWidget* parent, const QString& caption,
    const QString& directory, QFileDialog::Options options)
{
    const QPointer<QFileDialog> dialog =
        newDialog(settings, parent, caption, directory, QString(), QFileDialog::Directory, options);
    QString answer = answerTo(dialog);
    delete dialog;
    if (!answer.isEmpty() && settings)
        settings->setLastDirectory(answer);
    return answer;
}
