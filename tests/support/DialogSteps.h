// SPDX-License-Identifier: MIT
#pragma once

#include "support/Rows.h"

#include "cloud/CloudFileManger.h"
#include "support/DialogFixture.h"
#include "support/MultipartForm.h"

#include <QApplication>
#include <QClipboard>

/// \file
/// How tests of the dialogs describe what the user does and what must happen. CloudSpaceFixture plays it.

/// Something that the user does in a window. What waits must come last in it: the window may be destroyed
/// during the wait.
using Act = std::function<void(QDialog&)>;
using Acts = QVector<Act>;

/// Whether a request is sent even if its window was closed or destroyed before.
enum GoesOn
{
    Never,
    WhenClosed, ///< only if closed: it is a request of the window below, which is still there
    Anyway ///< it belongs to an operation that is not left half done
};

/// Something that must happen: a request, a message box, or a window in which the user goes on.
struct Step
{
    QByteArray method; ///< of a request; otherwise empty
    QString what; ///< target of the request, text of the box or title of the window
    QByteArray answer = {}; ///< the platform's reply
    /// What the request carries, as contentOf() has it; the client's token must come with it. Not checked
    /// when null.
    QByteArray content = {};
    ExpectedBox box = {};
    Acts acts = {}; ///< what the user does in the window
    GoesOn goesOn = Never;
};
using Steps = QVector<Step>;

/// One use of a window, from the first act to the last step.
struct Flow
{
    QString name;
    Acts acts;
    Steps steps; ///< what must happen
    QStringList shows = {}; ///< the rows at the end; empty for those that were loaded
};

/// Makes a window. The parent may be destroyed meanwhile.
using Make = std::function<QDialog*(CloudFileManger*, const QPointer<QWidget>&)>;

/// One of the windows.
struct Kind
{
    QString name;
    Make make;
    Steps opening; ///< what must happen before the user can act
    QVector<Flow> flows; ///< those that succeed, which tst_lifetimes ends at each step
    QVector<Flow> otherFlows = {}; ///< failures and special cases
    QStringList headers = {}; ///< of its table or tree
    QStringList loaded = {}; ///< the rows that were loaded; empty where there is no table or tree
};

// For the parameters of the short functions below.
using Bytes = const QByteArray&;
using Text = const QString&;

/// Answers of the platform. All texts that it chooses contain a tag, which must not be taken for markup.
const QByteArray success = R"({"code":0})";
const QByteArray refusal = R"({"code":1,"msg":"<i>no</i>"})";
const QString reason = "<i>no</i>";
const auto reply = [](Bytes json) { return R"({"code":0,"data":)" + json + '}'; };

// Requests.
const auto asks = [](Bytes method, Text target, Bytes answer = success, Bytes content = {}) {
    return Steps{{method, target, answer, content}};
};
/// A function, for Qt 6 has functions of that name in its headers.
inline Steps get(Text target, Bytes answer = success)
{
    return asks("GET", target, answer, "");
}
const auto del = [](Text target) { return asks("DELETE", target, success, ""); };
const auto post = [](Text target, Bytes content, Bytes answer = success) {
    return asks("POST", target, answer, content);
};
/// The same steps, of which the last, a request, is refused.
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
/// A box with that text, whatever its icon, title and buttons.
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
/// A box with the platform's code, which is on the clipboard already, and again after Ctrl+C.
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
/// Pastes \a text, which has blanks and line breaks around it on the clipboard.
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
/// Selects \a row, unless it is empty, and presses the button \a then.
const auto on = [](Text row, Text then) { return Acts{row.isEmpty() ? presses(then) : selects(row, then)}; };
/// Answers a file dialog with \a path in the working directory; cancels it when \a path is empty.
const auto chooses = [](Text path) -> Act {
    return [path](QDialog& dialog) {
        QVERIFY(dialog.inherits("QFileDialog"));
        dialog.findChild<QLineEdit*>("fileNameEdit")->setText(QDir().absoluteFilePath(path));
        QMetaObject::invokeMethod(&dialog, path.isEmpty() ? "reject" : "accept");
    };
};
/// Completes a form. Its fields must be as \a fields says, in the manner of fieldsOf(). Then \a texts
/// ("field=text") are typed or pasted; before one that begins with "*" the button is pressed too early. Enter
/// accepts the form.
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
