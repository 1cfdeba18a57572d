// SPDX-License-Identifier: MIT
#include "ui/TransferDialog.h"

#include "net/CloudTransferJob.h"
#include "ui/ElidedLabel.h"

#include <QApplication>
#include <QEvent>
#include <QEventLoop>
#include <QLabel>
#include <QLocale>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace tav {

namespace {

constexpr int appearsAfterMs = 500;
constexpr qint64 rateWindowMs = 10000;
constexpr qint64 steadyAfterMs = 3000;
constexpr int steps = 1000; // of the bar

QString sizeText(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

} // namespace

void TransferRate::add(qint64 atMs, qint64 bytesDone)
{
    samples.emplace_back(atMs, bytesDone);
    while (samples.back().first - samples.front().first > rateWindowMs)
        samples.pop_front();
}

qint64 TransferRate::secondsFor(qint64 bytes) const
{
    if (samples.empty())
        return -1;
    const qint64 time = samples.back().first - samples.front().first;
    const qint64 moved = samples.back().second - samples.front().second;
    return time < steadyAfterMs || moved <= 0 ? -1 : qint64(double(bytes) / moved * time / 1000);
}

TransferDialog::TransferDialog(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint)
    , title(new ElidedLabel(QString(), fontMetrics().averageCharWidth() * 60))
    , bar(new QProgressBar)
    , amount(new QLabel)
    , remaining(new QLabel)
{
    setWindowTitle(tr("Transfer"));
    setWindowModality(Qt::ApplicationModal);
    bar->setRange(0, steps);
    bar->setMinimumWidth(fontMetrics().averageCharWidth() * 60);
    bar->setAccessibleName(tr("Transfer"));
    auto* cancel = new QPushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, &TransferDialog::reject);

    auto* numbers = new QHBoxLayout;
    numbers->addWidget(amount);
    numbers->addStretch();
    numbers->addWidget(remaining);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(bar);
    layout->addLayout(numbers);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    parent->installEventFilter(this);
    clock.start();
}

void TransferDialog::run(TransferDialog* shown, CloudTransferJob& job, const QString& what)
{
    const QPointer<TransferDialog> dialog(shown);
    QEventLoop loop;
    connect(&job, &CloudTransferJob::finished, &loop, &QEventLoop::quit);
    connect(dialog, &QObject::destroyed, &loop, &QEventLoop::quit);
    dialog->current = &job;
    dialog->rate = TransferRate();
    ++dialog->index;
    dialog->title->setText(
        dialog->count > 1 ? tr("%1 (%2 of %3)").arg(what).arg(dialog->index).arg(dialog->count) : what);
    dialog->showProgress(CloudTransferProgress());
    connect(&job, &CloudTransferJob::progressed, dialog, &TransferDialog::showProgress);

    job.start();
    // Input before the window appears is not meant for it.
    if (!dialog->isVisible()) {
        QTimer::singleShot(
            int(std::max<qint64>(appearsAfterMs - dialog->clock.elapsed(), 0)), &loop, &QEventLoop::quit);
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    }
    if (dialog && job.isRunning()) {
        dialog->show();
        QApplication::changeOverrideCursor(Qt::BusyCursor);
        loop.exec();
    }
    if (dialog)
        dialog->current = nullptr;
    job.cancel();
}

bool TransferDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == parent() && event->type() == QEvent::Hide)
        reject();
    return QDialog::eventFilter(watched, event);
}

void TransferDialog::reject()
{
    cancelled = true;
    if (current)
        current->cancel();
    QDialog::reject();
}

void TransferDialog::showProgress(const CloudTransferProgress& progress)
{
    using Stage = CloudTransferProgress::Stage;
    const bool known = progress.bytesTotal > 0 && progress.stage != Stage::Waiting;
    if (progress.stage != stage)
        rate = TransferRate();
    stage = progress.stage;
    bar->setRange(0, known ? steps : 0);
    if (known)
        bar->setValue(int(double(progress.bytesDone) / progress.bytesTotal * steps));
    if (stage == Stage::Waiting)
        amount->setText(tr("Waiting for the platform..."));
    else if (known)
        amount->setText(tr("%1 of %2").arg(sizeText(progress.bytesDone), sizeText(progress.bytesTotal)));
    else
        amount->setText(progress.bytesDone > 0 ? sizeText(progress.bytesDone) : QString());
    remaining->setText(known ? remainingText(progress) : QString());
}

/// The time left, rounded so that the text does not change constantly.
QString TransferDialog::remainingText(const CloudTransferProgress& progress)
{
    const qint64 now = clock.elapsed();
    rate.add(now, progress.bytesDone);
    if (now - remainingShownAt < 1000)
        return remaining->text();
    remainingShownAt = now;
    const qint64 seconds = rate.secondsFor(progress.bytesTotal - progress.bytesDone);
    if (seconds < 0)
        return QString();
    if (seconds < 60)
        return tr("About %1 s left").arg(seconds / 5 * 5 + 5);
    if (seconds < 3600)
        return tr("About %1 min left").arg((seconds + 59) / 60);
    return tr("About %1 h left").arg((seconds + 3599) / 3600);
}

} // namespace tav
