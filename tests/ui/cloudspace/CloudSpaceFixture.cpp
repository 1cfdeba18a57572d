// SPDX-License-Identifier: MIT
#include "CloudSpaceFixture.h"

#include "ui/WindowNote.h"

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTest>

void CloudSpaceFixture::begin()
{
    DialogFixture::begin();
    // A client that is made with a project asks the platform at once.
    manager = std::make_unique<CloudFileManger>(CloudAccountLogin::instance()->getUrl(), "token", QString(),
        "Soft", QStringList(), ".bak", "Current", QString());
    manager->setProjectID("7");
}

void CloudSpaceFixture::end()
{
    QStringList missing;
    for (const auto& [poll, title] : std::exchange(awaited, {})) {
        poll->stop();
        missing.append(title);
    }
    DialogFixture::end();
    QVERIFY2(missing.isEmpty(), qPrintable("never opened: " + missing.join(", ")));
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
    QObject::connect(poll, &QTimer::timeout, [this, poll, title, play, sighted = false]() mutable {
        const QPointer<QDialog> dialog(qobject_cast<QDialog*>(QApplication::activeModalWidget()));
        const bool mine = awaited.first().first == poll;
        if (!mine || !dialog || !dialog->isActiveWindow() || dialog->windowTitle() != title)
            return;
        // What it loads begins with the next events, and is there when its note is gone.
        if (!std::exchange(sighted, true) || dialog->findChild<WindowNote*>())
            return;
        poll->stop();
        awaited.removeFirst();
        play(*dialog);
        if (dialog)
            dialog->close();
    });
    poll->start(5);
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
