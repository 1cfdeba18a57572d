// SPDX-License-Identifier: MIT
#include "CloudSpaceFixture.h"

#include "support/Robot.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTest>

namespace {
constexpr char playedProperty[] = "playedByFixture";
}

void CloudSpaceFixture::begin()
{
    DialogFixture::begin();
    // A client that is made with a project asks the platform at once.
    manager = std::make_unique<CloudFileManger>(CloudAccountLogin::instance()->getUrl(), "token", QString(),
        "Soft", QStringList(), ".bak", "Current", QString());
    manager->setProjectID("7");
}

QStringList CloudSpaceFixture::finish()
{
    QStringList wrong = DialogFixture::finish();
    for (const auto& [poll, title] : std::exchange(awaited, {})) {
        poll->stop();
        wrong.append("never came: " + title);
    }
    return wrong;
}

void CloudSpaceFixture::expectLists(const QByteArray& friends, const QByteArray& groups)
{
    expect("GET", "/project/cloudAddressBook/list", reply(friends));
    expect("GET", "/project/cloudProjectGroupUser/listUserGroups", reply(groups));
}

void CloudSpaceFixture::whenOpened(const QString& title, const std::function<void(QDialog&)>& play)
{
    // Each has a timer of its own: one whose play is on the stack does not fire.
    auto* poll = new QTimer(&polls);
    awaited.append({poll, title});
    QObject::connect(poll, &QTimer::timeout, [this, poll, title, play] {
        const QPointer<QDialog> dialog(qobject_cast<QDialog*>(QApplication::activeModalWidget()));
        const bool mine = awaited.first().first == poll;
        if (!mine || !dialog || !dialog->isVisible() || dialog->windowTitle() != title
            || dialog->property(playedProperty).toBool())
            return;
        // One that has only just come up may first ask the platform for its contents.
        if (QApplication::overrideCursor() && QApplication::overrideCursor()->shape() == Qt::WaitCursor)
            return;
        poll->stop();
        awaited.removeFirst();
        dialog->setProperty(playedProperty, true);
        robot::waitForFront(*dialog);
        QCoreApplication::processEvents();
        if (!dialog)
            return;
        play(*dialog);
        if (dialog)
            dialog->close();
    });
    poll->start(1);
}

void CloudSpaceFixture::whenAsked(const QString& title, const QString& path)
{
    whenOpened(title, [path](QDialog& dialog) {
        QVERIFY(qobject_cast<QFileDialog*>(&dialog));
        if (path.isEmpty())
            return dialog.reject();
        dialog.findChild<QLineEdit*>("fileNameEdit")->setText(path);
        QMetaObject::invokeMethod(&dialog, "accept");
    });
}

void bringUpLoaded(QDialog& dialog)
{
    dialog.show();
    QCoreApplication::processEvents(); // in which it loads
    bringUp(dialog);
}
