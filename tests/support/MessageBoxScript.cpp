// SPDX-License-Identifier: MIT
#include "MessageBoxScript.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPointer>
#include <QTest>

namespace {
constexpr int pollMs = 5;
constexpr char seenProperty[] = "seenByScript";

QString named(QMessageBox::StandardButtons buttons)
{
    return QStringLiteral("0x%1").arg(int(buttons), 0, 16);
}

QStringList textsOf(const QMessageBox& box)
{
    QStringList texts;
    for (const QAbstractButton* button : box.buttons())
        texts.append(button->text().remove('&'));
    return texts;
}
} // namespace

MessageBoxScript::MessageBoxScript()
{
    QObject::connect(&timer, &QTimer::timeout, [this] { poll(); });
    timer.start(pollMs);
}

MessageBoxScript::~MessageBoxScript()
{
    const QStringList wrong = finish();
    if (!wrong.isEmpty() && !QTest::currentTestFailed())
        QTest::qFail(qPrintable(wrong.join(QStringLiteral("; "))), __FILE__, __LINE__);
}

void MessageBoxScript::expectPrompt(const QString& text, const std::function<void()>& look)
{
    expect(
        {QMessageBox::Information, QStringLiteral("Prompt"), text, QMessageBox::Ok, QMessageBox::Ok, look});
}

QStringList MessageBoxScript::finish()
{
    timer.stop();
    for (const ExpectedBox& missing : script)
        complaints.append(QStringLiteral("never came: \"%1\"").arg(missing.text));
    script.clear();
    return std::exchange(complaints, {});
}

void MessageBoxScript::poll()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible() || box->property(seenProperty).toBool())
        return;
    box->setProperty(seenProperty, true);
    handle(*box);
}

void MessageBoxScript::handle(QMessageBox& box)
{
    if (script.empty()) {
        complaints.append(QStringLiteral("unexpected: \"%1\"").arg(box.text()));
        box.reject();
        return;
    }
    const ExpectedBox expected = script.front();
    script.pop_front();
    compare(QStringLiteral("text"), box.text(), expected.text);
    compare(QStringLiteral("title"), box.windowTitle(), expected.title);
    compare(QStringLiteral("icon"), QString::number(box.icon()), QString::number(expected.icon));
    compare(QStringLiteral("buttons"), named(box.standardButtons()), named(expected.buttons));
    if (!expected.buttonTexts.isEmpty())
        compare(QStringLiteral("buttons' texts"), textsOf(box).join('|'), expected.buttonTexts.join('|'));

    const QPointer<QMessageBox> alive(&box);
    if (expected.look)
        expected.look();
    if (!alive)
        return;
    if (QAbstractButton* button = box.button(expected.answer))
        QTest::mouseClick(button, Qt::LeftButton);
    else
        box.reject();
}

void MessageBoxScript::compare(const QString& what, const QString& actual, const QString& expected)
{
    if (actual != expected)
        complaints.append(QStringLiteral("%1 is \"%2\", not \"%3\"").arg(what, actual, expected));
}
