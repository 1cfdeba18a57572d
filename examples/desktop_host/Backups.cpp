// SPDX-License-Identifier: MIT
#include "Backups.h"

#include "net/CloudFailure.h"
#include "net/CloudTransferJob.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QTimer>
#include <QToolButton>

namespace {

constexpr int appearsAfterMs = 500; // most backups are over by then
constexpr int steps = 1000;

QDateTime modified(const QString& drawing)
{
    return QFileInfo(drawing).lastModified();
}

} // namespace

Backups::Backups()
    : text(new QLabel)
    , bar(new QProgressBar)
{
    text->setTextFormat(Qt::PlainText);
    bar->setRange(0, steps);
    bar->setTextVisible(false);
    bar->setFixedWidth(fontMetrics().averageCharWidth() * 20);
    bar->setMaximumHeight(fontMetrics().height());
    bar->setAccessibleName(tr("Backup"));
    auto* cancelButton = new QToolButton;
    cancelButton->setText(tr("Cancel"));
    connect(cancelButton, &QToolButton::clicked, this, &Backups::cancel);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(text);
    layout->addWidget(bar);
    layout->addWidget(cancelButton);
    hide();
}

void Backups::start(CloudTransferJob* job)
{
    const QString drawing = job->filePath();
    job->setParent(this);
    running.insert(drawing, {job, modified(drawing)});
    connect(job, &CloudTransferJob::progressed, this, [=](const CloudTransferProgress& progress) {
        Backup& backup = running[drawing];
        if (progress.stage == CloudTransferProgress::Stage::Sending) {
            backup.bytesDone = progress.bytesDone;
            backup.bytesTotal = progress.bytesTotal;
        }
        updateBar();
        if (backup.bytesTotal > 0)
            emit progressed(drawing, int(100 * backup.bytesDone / backup.bytesTotal));
    });
    connect(job, &CloudTransferJob::finished, this, [=](bool isDone) { conclude(drawing, isDone); });
    job->start();
    updateBar();
    QTimer::singleShot(appearsAfterMs, this, [this] { setVisible(areRunning()); });
}

void Backups::cancel()
{
    for (const Backup& backup : QMap<QString, Backup>(running))
        backup.job->cancel();
}

void Backups::conclude(const QString& drawing, bool isDone)
{
    const Backup backup = running.take(drawing);
    backup.job->deleteLater();
    updateBar();
    setVisible(isVisible() && areRunning());
    QString problem;
    if (!isDone && backup.job->failure() != CloudFailure::Cancelled)
        problem = cloudFailureText(backup.job->failure(), backup.job->errorText());
    // What was sent may be of both states then.
    else if (isDone && modified(drawing) != backup.modified)
        problem = tr("It changed while it was being backed up. Back it up again.");
    emit ended(drawing, isDone && problem.isEmpty(), problem);
}

void Backups::updateBar()
{
    qint64 done = 0, total = 0;
    for (const Backup& backup : qAsConst(running)) {
        done += backup.bytesDone;
        total += backup.bytesTotal;
    }
    bar->setRange(0, done < total ? steps : 0); // all sent: the platform is at work
    bar->setValue(total > 0 ? int(double(done) / double(total) * steps) : 0);
    if (running.size() == 1)
        text->setText(tr("Backing up %1").arg(QFileInfo(running.firstKey()).fileName()));
    else
        text->setText(tr("Backing up %1 drawings").arg(running.size()));
}
