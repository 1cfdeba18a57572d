// SPDX-License-Identifier: MIT
#include "Album.h"

#include <QApplication>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace {

constexpr int frameWidth = 1;

/// The window as a desktop shows it, with its title.
QPixmap framed(QWidget& window)
{
    const QPixmap content = window.grab();
    const qreal scale = content.devicePixelRatio();
    const int bar = window.fontMetrics().height() + 10;
    const QSize inner = content.size() / scale;
    QPixmap picture((inner + QSize(2 * frameWidth, bar + 2 * frameWidth)) * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(QColor(0x50, 0x58, 0x64));
    QPainter painter(&picture);
    painter.setPen(Qt::white);
    painter.drawText(
        QRect(frameWidth, frameWidth, inner.width(), bar), Qt::AlignCenter, window.windowTitle());
    painter.drawPixmap(frameWidth, bar + frameWidth, content);
    return picture;
}

/// \a front in the middle of \a back, which grows when it must.
QPixmap stacked(const QPixmap& back, const QPixmap& front)
{
    const qreal scale = back.devicePixelRatio();
    const QSize size = back.size().expandedTo(front.size() + QSize(40, 40) * scale);
    QPixmap picture(size);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    const auto place = [&](const QPixmap& layer) {
        painter.drawPixmap(
            QPointF(size.width() - layer.width(), size.height() - layer.height()) / 2 / scale, layer);
    };
    place(back);
    place(front);
    return picture;
}

} // namespace

void Album::shoot(QWidget& window, const QString& name) const
{
    window.show();
    window.activateWindow();
    if (!QTest::qWaitForWindowExposed(&window))
        qFatal("%s does not come up.", qPrintable(name));
    QCoreApplication::processEvents();
    save(framed(window), name);
}

void Album::shootBox(QWidget& window, const QString& button, const QString& name) const
{
    window.show();
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        poll.stop();
        save(stacked(framed(window), framed(*box)), name);
        box->accept();
    });
    poll.start(20);
    press(window, button);
    if (poll.isActive())
        qFatal("No box came up for %s.", qPrintable(name));
}

void Album::shootWaiting(QWidget& window, const QString& button, const QString& name) const
{
    bool taken = false;
    QTimer::singleShot(250, &window, [&] {
        save(framed(window), name);
        taken = true;
    });
    press(window, button);
    if (!taken)
        qFatal("The window did not wait for %s.", qPrintable(name));
}

void Album::press(QWidget& window, const QString& text)
{
    for (QPushButton* button : window.findChildren<QPushButton*>())
        if (button->isVisible() && button->text() == text)
            return button->click();
    qFatal("There is no button %s.", qPrintable(text));
}

void Album::save(const QPixmap& picture, const QString& name) const
{
    const QString path = folder.filePath(prefix + name + ".png");
    if (!picture.save(path))
        qFatal("Cannot write %s.", qPrintable(path));
}
