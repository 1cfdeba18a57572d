// SPDX-License-Identifier: MIT
#pragma once

#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <list>

/// One message box as it must come up, and what the user does with it.
struct ExpectedBox
{
    QMessageBox::Icon icon; ///< NoIcon leaves icon, title and buttons open
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons = QMessageBox::Ok;
    QMessageBox::StandardButton answer = QMessageBox::Ok;
    /// Looks around while the box is up, before the answer. May destroy the box.
    std::function<void()> look = {};
    /// What stands on the buttons, in their order, without the marks of their shortcuts; empty to leave it
    /// open. Buttons with texts of their own are still the standard buttons behind them.
    QStringList buttonTexts = {};
    QString more = {}; ///< what stands below the text; null to leave it open
};

/// Plays the user in front of message boxes: waits for each box of the script, checks it and answers it.
///
/// A box that is another one than the script has, one that it does not have at all, and one that never came
/// fail the running test when the script goes. Make it in a test, before the boxes may come.
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
    QPointer<QMessageBox> looked; ///< waits for its answer
    QMessageBox::StandardButton answer = QMessageBox::NoButton;
};
