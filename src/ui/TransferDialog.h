// SPDX-License-Identifier: MIT
#pragma once

#include "net/CloudTransferOptions.h"

#include <QDialog>
#include <QElapsedTimer>

#include <deque>
#include <utility>

class CloudTransferJob;
class QLabel;
class QProgressBar;

namespace tav {

class ElidedLabel;

/// The speed of a transfer over its last seconds.
class TransferRate
{
public:
    /// \param atMs on a clock that only goes forward
    void add(qint64 atMs, qint64 bytesDone);
    /// How long \a bytes take; -1 while that cannot be said.
    qint64 secondsFor(qint64 bytes) const;

private:
    std::deque<std::pair<qint64, qint64>> samples;
};

/// The modal progress window of one or several transfers, one after another: file, bytes, time left, and a
/// button to cancel. It appears only when they last longer than half a second.
class TransferDialog : public QDialog
{
    Q_OBJECT

public:
    explicit TransferDialog(QWidget* parent);

    /// How many transfers there will be; shown when they are several.
    void setCount(int files) { count = files; }
    /// Whether the user cancelled.
    bool wasCancelled() const { return cancelled; }

    /// Runs \a job to its end. The job is cancelled when \a dialog is destroyed or its parent hidden
    /// meanwhile. \param what what it does, for the user
    static void run(TransferDialog* dialog, CloudTransferJob& job, const QString& what);

    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    void reject() override;

private:
    void showProgress(const CloudTransferProgress& progress);
    QString remainingText(const CloudTransferProgress& progress);

    ElidedLabel* title;
    QProgressBar* bar;
    QLabel* amount;
    QLabel* remaining;
    QElapsedTimer clock;
    TransferRate rate;
    CloudTransferProgress::Stage stage{};
    qint64 remainingShownAt = 0;
    int count = 1;
    int index = 0;
    bool cancelled = false;
    CloudTransferJob* current = nullptr;
};

} // namespace tav
