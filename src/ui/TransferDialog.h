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

/// The modal window of one or several transfers, one after another: which file, how much of it, how long
/// still, and a button to cancel. It comes up only when they last longer than a moment.
class TransferDialog : public QDialog
{
    Q_OBJECT

public:
    explicit TransferDialog(QWidget* parent);

    /// How many transfers there will be; shown when they are several.
    void setCount(int files) { count = files; }
    /// Whether the user gave them up.
    bool wasCancelled() const { return cancelled; }

    /// Runs \a job to its end, whoever destroys \a dialog or hides its parent meanwhile: the job is given up
    /// then.
    /// \param what what it does, for the user
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
