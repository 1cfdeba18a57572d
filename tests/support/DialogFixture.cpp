// SPDX-License-Identifier: MIT
#include "support/DialogFixture.h"

#include "support/Robot.h"
#include "support/TestConstants.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTabBar>
#include <QTest>

#include <atomic>

namespace {

/// The session as it is at first. Its destructor is private, so this copy is never destroyed.
const CloudAccountLogin& pristine()
{
    static const auto* const copy = new CloudAccountLogin(*CloudAccountLogin::instance());
    return *copy;
}

} // namespace

DialogFixture::DialogFixture()
{
    setPlatformAddress(peer.address());
    pristine();
    QGuiApplication::setQuitOnLastWindowClosed(false); // a host has more windows
}

void DialogFixture::begin()
{
    *CloudAccountLogin::instance() = pristine();
    scratch = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir::setCurrent(scratch->path()));
    script = std::make_unique<MessageBoxScript>();
}

QStringList DialogFixture::finish()
{
    const QStringList wrong = (script ? script->finish() : QStringList()) + peer.reset();
    QCoreApplication::removePostedEvents(&gui);
    script.reset();
    return wrong;
}

void DialogFixture::end()
{
    const QStringList wrong = finish();
    QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join("; ")));
    QVERIFY(!QApplication::overrideCursor());
}

void DialogFixture::expect(const QByteArray& method, const QByteArray& target, const QByteArray& json,
    const std::function<void()>& meanwhile)
{
    peer.expect(method, target, [this, json, meanwhile](PeerConnection& connection) {
        if (!connection.readHead() || !connection.readBody())
            return;
        const auto released = std::make_shared<std::atomic<bool>>(false);
        QMetaObject::invokeMethod(
            &gui,
            [meanwhile, released] {
                meanwhile();
                *released = true;
            },
            Qt::QueuedConnection);
        while (!*released && connection.pause(1)) { }
        if (json.isNull())
            connection.waitForClient();
        else
            connection.send(behaviour::response(json));
    });
}

void bringUp(QDialog& dialog)
{
    dialog.show();
    robot::waitForFront(dialog);
}

QPushButton* button(const QWidget& window, const QString& text)
{
    for (QPushButton* candidate : window.findChildren<QPushButton*>())
        if (candidate->isVisible() && candidate->text() == text)
            return candidate;
    return nullptr;
}

void press(const QWidget& window, const QString& text)
{
    QPushButton* target = button(window, text);
    QVERIFY2(target, qPrintable(text));
    robot::click(*target);
}

void follow(const QDialog& dialog, const QString& link, const std::function<void(QDialog&)>& play)
{
    bool played = false;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        const QPointer<QDialog> opened = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (!opened || opened == &dialog || !opened->isVisible())
            return;
        poll.stop();
        robot::waitForFront(*opened);
        play(*opened);
        played = true;
        // A dialog that a failed play left open would block the test.
        if (opened)
            opened->close();
    });
    poll.start(5);
    press(dialog, link);
    QVERIFY(played);
}

void openTab(const QDialog& dialog, Tab tab)
{
    const auto* bar = dialog.findChild<QTabBar*>();
    robot::click(*bar, bar->tabRect(tab).center());
}

QLineEdit* field(const QWidget& window, const QString& name)
{
    for (QLineEdit* candidate : window.findChildren<QLineEdit*>()) {
        const auto* combo = qobject_cast<QComboBox*>(candidate->parentWidget());
        const QWidget* named = combo ? static_cast<const QWidget*>(combo) : candidate;
        if (candidate->isVisible() && named->accessibleName() == name)
            return candidate;
    }
    return nullptr;
}

void type(const QWidget& window, const QString& name, const QString& text)
{
    QLineEdit* target = field(window, name);
    QVERIFY2(target, qPrintable(name));
    robot::click(*target);
    robot::key(*target, Qt::Key_A, Qt::ControlModifier);
    robot::key(*target, Qt::Key_Delete);
    robot::write(*target, text);
}

void fillIn(const QWidget& window, const Texts& texts)
{
    for (const auto& [name, text] : texts)
        type(window, name, text);
}
