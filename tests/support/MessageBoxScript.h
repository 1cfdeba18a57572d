// SPDX-License-Identifier: MIT
#pragma once

#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <list>

/// A message box that must come up, and what the user does with it.
struct ExpectedBox
{
    QMessageBox::Icon icon; ///< with NoIcon neither icon, title nor buttons are checked
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons = QMessageBox::Ok;
    QMessageBox::StandardButton answer = QMessageBox::Ok;
    /// Called while the box is up, before the answer. May destroy the box.
    std::function<void()> look = {};
    /// The texts of the buttons, in their order, without mnemonics; not checked when empty. A standard button
    /// may have another text.
    QStringList buttonTexts = {};
    QString more = {}; ///< the informative text; not checked when null
};

/// Plays the user in front of message boxes: waits for each box of the script, checks it and answers it.
///
/// A box that differs from the script, one that is not in it, and one that never came fail the running test
/// when the script is destroyed. Make it in a test, before the boxes may come.
class MessageBoxScript
{
public:
    MessageBoxScript();
    ~MessageBoxScript();
    MessageBoxScript(const MessageBoxScript&) = delete;
    MessageBoxScript& operator=(const MessageBoxScript&) = delete;

    void expect(const ExpectedBox& box) { script.push_back(box); }
    void expectPrompt(const QString& text, const std::function<void()>& look = {});
    /// Ends the script and returns what was wrong; what is returned here no longer fails the test.
    QStringList finish();

private:
    void poll();
    void look(QMessageBox& box);
    void compare(const QString& what, const QString& actual, const QString& expected);

    QTimer timer;
    std::list<ExpectedBox> script;
    QStringList complaints;
    QPointer<QMessageBox> looked; ///< checked, and waits for its answer
    QMessageBox::StandardButton answer = QMessageBox::NoButton;
};
