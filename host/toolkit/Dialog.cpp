// SPDX-License-Identifier: MIT
#include "toolkit/Dialog.h"

#include "toolkit/ISystemSettings.h"

#include <QEvent>
#include <QScreen>
#include <QStyle>

Dialog::Dialog(QWidget* parent)
    : QDialog(parent)
{
    setModal(true);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

void Dialog::setVisible(bool visible)
{
    if (visible && !isVisible())
        takeSizeFromSettings();
    QDialog::setVisible(visible);
}

bool Dialog::event(QEvent* event)
{
    // A resize by the program itself is not a spontaneous event.
    if (event->type() == QEvent::Resize)
        noteSize(event->spontaneous() && isVisible());
    return QDialog::event(event);
}

void Dialog::noteSize(bool byUser)
{
    if (!byUser)
        sizeByProgram = size();
    // Window systems report the size that the program set as if the user had set it.
    sizedByUser = byUser && (sizedByUser || size() != sizeByProgram);
    const QString name = sizedByUser && pSystemSettings ? nameInSettings() : QString();
    if (!name.isEmpty() && !isMaximized() && !isFullScreen())
        pSystemSettings->setWindowSize(name, size());
}

QString Dialog::nameInSettings() const
{
    if (!objectName().isEmpty())
        return objectName();
    return metaObject() == &staticMetaObject ? QString() : QString(metaObject()->className());
}

void Dialog::takeSizeFromSettings()
{
    const QString name = nameInSettings();
    const QSize kept = pSystemSettings && !name.isEmpty() ? pSystemSettings->windowSize(name) : QSize();
    if (kept.isEmpty())
        return;
    // Without the layout's minimum, which may have grown since, it would be too small for a moment.
    ensurePolished();
    const QWidget* opener = parentWidget() ? parentWidget() : this;
    const QSize title(0, style()->pixelMetric(QStyle::PM_TitleBarHeight));
    resize(kept.boundedTo(opener->screen()->availableSize() - title).expandedTo(minimumSizeHint()));
}
