// SPDX-License-Identifier: MIT
#include "MessageBoxScript.h"

#include "Robot.h"

#include <QAbstractButton>
#include <QApplication>
#include <QTest>
#include <QTextDocument>
#include <QTextDocumentFragment>

namespace {
constexpr int pollMs = 1;
constexpr char seenProperty[] = "seenByScript";

QString named(QMessageBox::StandardButtons buttons)
{
    return QStringLiteral("0x%1").arg(int(buttons), 0, 16);
}

/// What the user reads in \a box: not all of its text when that is taken for markup.
QString shownIn(const QMessageBox& box)
{
    const bool isMarkup = box.textFormat() == Qt::RichText
        || (box.textFormat() == Qt::AutoText && Qt::mightBeRichText(box.text()));
    return isMarkup ? QTextDocumentFragment::fromHtml(box.text()).toPlainText() : box.text();
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
    if (!box || !box->isVisible())
        return;
    // In a turn of its own: look() may have destroyed the box, or quit the application.
    if (box == looked) {
        looked = nullptr;
        const QAbstractButton* button = box->button(answer);
        button ? robot::click(*button) : box->reject();
    } else if (!box->property(seenProperty).toBool()) {
        box->setProperty(seenProperty, true);
        robot::waitForFront(*box);
        look(*box);
    }
}

void MessageBoxScript::look(QMessageBox& box)
{
    if (script.empty()) {
        complaints.append(QStringLiteral("unexpected: \"%1\"").arg(box.text()));
        box.reject();
        return;
    }
    const ExpectedBox expected = script.front();
    script.pop_front();
    compare(QStringLiteral("text"), shownIn(box), expected.text);
    if (expected.icon != QMessageBox::NoIcon) {
        compare(QStringLiteral("title"), box.windowTitle(), expected.title);
        compare(QStringLiteral("icon"), QString::number(box.icon()), QString::number(expected.icon));
        compare(QStringLiteral("buttons"), named(box.standardButtons()), named(expected.buttons));
    }
    if (!expected.more.isNull())
        compare(QStringLiteral("more"), box.informativeText(), expected.more);
    if (!expected.buttonTexts.isEmpty())
        compare(QStringLiteral("buttons' texts"), textsOf(box).join('|'), expected.buttonTexts.join('|'));

    answer = expected.answer;
    looked = &box;
    if (expected.look)
        expected.look();
}

void MessageBoxScript::compare(const QString& what, const QString& actual, const QString& expected)
{
    if (actual != expected)
        complaints.append(QStringLiteral("%1 is \"%2\", not \"%3\"").arg(what, actual, expected));
}
