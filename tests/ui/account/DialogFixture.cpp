// SPDX-License-Identifier: MIT
#include "DialogFixture.h"

#include "support/TestConstants.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTabBar>
#include <QTest>

namespace {

/// The session as it begins. Its destructor is its own business, so this copy stays.
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
    holder.setInterval(5);
}

void DialogFixture::begin()
{
    *CloudAccountLogin::instance() = pristine();
    scratch = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir::setCurrent(scratch->path()));
    script = std::make_unique<MessageBoxScript>();
    requestsBefore = peer.requests().size();
    expected = 0;
}

void DialogFixture::end()
{
    QObject::disconnect(&holder, nullptr, nullptr, nullptr);
    script.reset();
    QCOMPARE(requests().size(), expected);
    QVERIFY(!QApplication::overrideCursor());
}

void DialogFixture::expect(const QByteArray& method, const QByteArray& target, const QByteArray& json)
{
    ++expected;
    peer.expect(method, target, behaviour::answer(json));
}

void DialogFixture::expectAndHold(const QByteArray& method, const QByteArray& target, const QByteArray& json,
    const std::function<void()>& meanwhile)
{
    ++expected;
    arrived = false;
    released = false;
    peer.expect(method, target, [this, json](PeerConnection& connection) {
        connection.readHead();
        connection.readBody();
        arrived = true;
        while (!released)
            connection.pause(1);
        connection.send(behaviour::response(json));
    });
    QObject::connect(&holder, &QTimer::timeout, [this, meanwhile] {
        if (!arrived)
            return;
        holder.stop();
        meanwhile();
        released = true;
    });
    holder.start();
}

QVector<RecordedRequest> DialogFixture::requests()
{
    return peer.requests().mid(requestsBefore);
}

void bringUp(QDialog& dialog)
{
    dialog.show();
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
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
    QTest::mouseClick(target, Qt::LeftButton);
}

void follow(const QDialog& dialog, const QString& link, const std::function<void(QDialog&)>& play)
{
    bool played = false;
    QTimer::singleShot(0, &dialog, [&] {
        const QPointer<QDialog> opened = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        QVERIFY(opened && opened != &dialog);
        bringUp(*opened);
        play(*opened);
        played = true;
        // Left open by a play that failed, it would keep the test from ending.
        if (opened)
            opened->close();
    });
    press(dialog, link);
    QVERIFY(played);
}

void openTab(const QDialog& dialog, Tab tab)
{
    auto* bar = dialog.findChild<QTabBar*>();
    QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(tab).center());
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
    target->setFocus();
    target->selectAll();
    QTest::keyClick(target, Qt::Key_Delete);
    for (const QChar letter : text) // keyClicks() has only those of a western keyboard
        QTest::sendKeyEvent(QTest::Click, target, Qt::Key_unknown, letter, Qt::NoModifier);
}

void fillIn(const QWidget& window, const Texts& texts)
{
    for (const auto& [name, text] : texts)
        type(window, name, text);
}
