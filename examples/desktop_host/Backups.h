// SPDX-License-Identifier: MIT
#pragma once

#include <QDateTime>
#include <QMap>
#include <QWidget>

class CloudTransferJob;
class QLabel;
class QProgressBar;

/// The backups that run, as a part of the status bar: how far they are, and a button that gives them up. Any
/// number run at once, one for each drawing.
class Backups : public QWidget
{
    Q_OBJECT

public:
    Backups();

    /// Starts \a job, and destroys it when it has ended.
    void start(CloudTransferJob* job);
    /// Gives all of them up.
    void cancel();

    bool areRunning() const { return !running.isEmpty(); }
    bool isRunning(const QString& drawing) const { return running.contains(drawing); }

signals:
    void progressed(const QString& drawing, int percent);
    /// \param problem why the drawing is not backed up, for the user
    void ended(const QString& drawing, bool isBackedUp, const QString& problem);

private:
    struct Backup
    {
        CloudTransferJob* job;
        QDateTime modified;
        qint64 bytesDone = 0;
        qint64 bytesTotal = 0;
    };

    void conclude(const QString& drawing, bool isDone);
    void updateBar();

    QMap<QString, Backup> running;
    QLabel* text;
    QProgressBar* bar;
};
