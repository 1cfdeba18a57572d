// SPDX-License-Identifier: MIT
#pragma once

#include "support/Rows.h"

#include "cloud/CloudFileManger.h"
#include "support/DialogFixture.h"
#include "support/MultipartForm.h"

#include <QApplication>
#include <QClipboard>

/// The words in which tests of the dialogs say what the user does, and what comes of it. CloudSpaceFixture
/// plays it.

/// What the user does in a window. Nothing in it comes after a wait: the window may go in that.
using Act = std::function<void(QDialog&)>;
using Acts = QVector<Act>;

/// Whether a request is sent as well when its window went before.
enum GoesOn
{
    Never,
    WhenClosed, ///< it is for the window below, which is still there
    Anyway ///< it is part of one operation, which is not left half done
};

/// What comes of it: a request, a message box, or a window in which the user goes on.
struct Step
{
    QByteArray method; ///< of a request, else empty
    QString what; ///< target, text or title
    QByteArray answer = {}; ///< the platform's
    /// The parts of the request's form, or else its type and body, once the user is signed in; null leaves
    /// it open.
    QByteArray content = {};
    ExpectedBox box = {};
    Acts acts = {}; ///< in the window
    GoesOn goesOn = Never;
};
using Steps = QVector<Step>;

/// A way through a window.
struct Flow
{
    QString name;
    Acts acts;
    Steps steps; ///< what comes of them
    QStringList shows = {}; ///< in the end; as it was loaded, if empty
};

/// Makes a window. The parent may go meanwhile.
using Make = std::function<QDialog*(CloudFileManger*, const QPointer<QWidget>&)>;

/// One of the windows.
struct Kind
{
    QString name;
    Make make;
    Steps opening; ///< what comes before the user can act
    QVector<Flow> flows; ///< those to their end, which may all end early
    QVector<Flow> otherFlows = {};
    QStringList headers = {}; ///< of its table or tree
    QStringList loaded = {}; ///< what that shows; empty where it has none
};

using Bytes = const QByteArray&;
using Text = const QString&;

/// What the platform answers. Whatever it chooses has a tag in it.
const QByteArray success = R"({"code":0})";
const QByteArray refusal = R"({"code":1,"msg":"<i>no</i>"})";
const QString reason = "<i>no</i>";
const auto reply = [](Bytes json) { return R"({"code":0,"data":)" + json + '}'; };

// Requests.
const auto asks = [](Bytes method, Text target, Bytes answer = success, Bytes content = {}) {
    return Steps{{method, target, answer, content}};
};
const auto get = [](Text target, Bytes answer = success) { return asks("GET", target, answer, ""); };
const auto del = [](Text target) { return asks("DELETE", target, success, ""); };
const auto post = [](Text target, Bytes content, Bytes answer = success) {
    return asks("POST", target, answer, content);
};
const auto part = [](Bytes name, Bytes value) { return fieldHead(name) + '=' + value + '\n'; };
/// The last of them.
const auto refused = [](Steps steps) {
    steps.last().answer = refusal;
    return steps;
};
const auto still = [](GoesOn when, Steps steps) {
    for (Step& step : steps)
        step.goesOn = when;
    return steps;
};

// Boxes, and the user's answers.
const auto yes = QMessageBox::Ok;
const auto no = QMessageBox::Cancel;
const auto messageBox = [](const ExpectedBox& expected) {
    return Steps{{{}, expected.text, {}, {}, expected}};
};
/// Whatever its looks.
const auto says = [](Text text) { return messageBox({QMessageBox::NoIcon, {}, text}); };
const auto prompt = [](Text text, Text more = "", Text title = "Prompt",
                        QMessageBox::Icon icon = QMessageBox::Information) {
    return messageBox({icon, title, text, yes, yes, {}, {"OK"}, more});
};
const auto warning = [](Text text) { return prompt(text, "", "Prompt", QMessageBox::Warning); };
const auto error = [](Text text, Text more = reason, Text button = "OK") {
    return messageBox({QMessageBox::Critical, "Error", text, yes, yes, {}, {button}, more});
};
const auto question = [](Text text, auto answer, QMessageBox::Icon icon = QMessageBox::Question) {
    return messageBox({icon, "Prompt", text, yes | no, answer, {}, {"OK", "Cancel"}, ""});
};
/// The code that the platform gives, on the clipboard too, and there once more when the user wants it.
const QString fetched = "<i>C</i>";
const auto showsCode = [](Text text) {
    Steps steps = prompt(text, "", "Anonymous share");
    steps[0].box.look = [] {
        QCOMPARE(QApplication::clipboard()->text(), fetched);
        QApplication::clipboard()->clear();
        robot::key(*QApplication::activeModalWidget(), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), fetched);
    };
    return steps;
};

// Windows, and what the user does in them.
const auto opens = [](Text title, const Acts& acts) { return Steps{{{}, title, {}, {}, {}, acts}}; };
const auto presses = [](Text text) -> Act { return [text](QDialog& dialog) { press(dialog, text); }; };
const auto hits = [](Qt::Key key) -> Act { return [key](QDialog& dialog) { robot::key(dialog, key); }; };
const auto enters = [](Text name, Text text) -> Act {
    return [=](QDialog& dialog) { type(dialog, name, text); };
};
/// From the clipboard, on which there is more than the text.
const auto pastes = [](Text text) -> Act {
    return [text](QDialog& dialog) {
        QApplication::clipboard()->setText(' ' + text + "\r\n");
        press(dialog, "Paste");
    };
};
const auto fills = [](const Texts& texts, Text then) -> Act {
    return [=](QDialog& dialog) {
        fillIn(dialog, texts);
        press(dialog, then);
    };
};
const auto selects = [](Text row, Text then) -> Act {
    return [=](QDialog& dialog) {
        clickRow(dialog, row);
        press(dialog, then);
    };
};
/// Presses a button, for a row if there is one.
const auto on = [](Text row, Text then) { return Acts{row.isEmpty() ? presses(then) : selects(row, then)}; };
/// Answers a file dialog with a path in the working directory, or cancels it when there is none.
const auto chooses = [](Text path) -> Act {
    return [path](QDialog& dialog) {
        QVERIFY(dialog.inherits("QFileDialog"));
        dialog.findChild<QLineEdit*>("fileNameEdit")->setText(QDir().absoluteFilePath(path));
        QMetaObject::invokeMethod(&dialog, path.isEmpty() ? "reject" : "accept");
    };
};
/// Completes a form: its fields are as \a fields says (a ">" is before the one with the focus, a "!" before
/// those that stay), then the texts are filled in or pasted, after a press too early for each with a "*".
inline Acts completes(Text fields, Text then, const QStringList& texts = {})
{
    Acts acts{[=](QDialog& form) { QCOMPARE(fieldsOf(form), fields); }};
    for (const QString& text : texts) {
        if (text.startsWith('*'))
            acts.append(presses(then));
        const Act types = enters(text.section('=', 0, 0).remove('*'), text.section('=', 1));
        const Act takes = pastes(text.section('=', 1));
        acts.append([=](QDialog& form) { (button(form, "Paste") ? takes : types)(form); });
    }
    return acts << hits(Qt::Key_Return);
}
