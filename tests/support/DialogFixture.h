// SPDX-License-Identifier: MIT
#pragma once

#include "account/CloudAccountLogin.h"
#include "support/MessageBoxScript.h"
#include "support/ScriptedPeer.h"

#include <QDialog>
#include <QTemporaryDir>

#include <memory>

class QLineEdit;
class QPushButton;

/// The names of fields and buttons that several dialogs have.
const QString accountField = "Phone number/email";
const QString codeField = "Verification";
const QString passwordField = "Password";
const QString codeButton = "Obtaining verification code";

using Texts = QVector<QPair<QString, QString>>;

/// What the tests of dialogs have in common: the platform, the message boxes, and an empty working directory
/// for the account file. The session takes its address once, so there is one peer for all tests of a program.
class DialogFixture
{
public:
    DialogFixture();
    virtual ~DialogFixture() = default;

    /// Call it before every test: nobody is signed in, the folder and the script are empty.
    void begin();
    /// Call it after every test: fails it when a box, a request or a dialog was missing or not as expected.
    void end();
    /// Ends a test without failing it: returns what was missing or not as expected.
    virtual QStringList finish();

    /// The platform is to answer the next request with \a json, or, if that is null, never. Before it does,
    /// \a meanwhile runs in the GUI thread.
    void expect(
        const QByteArray& method, const QByteArray& target, const QByteArray& json,
        const std::function<void()>& meanwhile = [] {});
    /// From now on no request may come.
    void expectNothing() { peer.expectNothing(); }
    /// The requests of this test.
    QVector<RecordedRequest> requests() { return peer.requests(); }

    MessageBoxScript& boxes() { return *script; }

private:
    ScriptedPeer peer;
    std::unique_ptr<QTemporaryDir> scratch;
    std::unique_ptr<MessageBoxScript> script;
    QObject gui; ///< receives what the peer's threads let run in the GUI thread
};

/// A test program on the account dialogs: every test begins and ends with the fixture.
class DialogTest : public QObject
{
    Q_OBJECT

protected slots:
    void init() { fixture->begin(); }
    void cleanup() { fixture->end(); }

protected:
    const std::unique_ptr<DialogFixture> fixture = std::make_unique<DialogFixture>();
};

/// Shows \a dialog and waits until it is in front.
void bringUp(QDialog& dialog);

/// The visible button of that text, or null.
QPushButton* button(const QWidget& window, const QString& text);
void press(const QWidget& window, const QString& text);
/// Presses a link of \a dialog, and runs \a play on the dialog that it opens.
void follow(const QDialog& dialog, const QString& link, const std::function<void(QDialog&)>& play);

enum Tab
{
    CodeTab,
    PasswordTab
};
void openTab(const QDialog& dialog, Tab tab);

/// The visible field with the accessible name \a name, or null; of a combo box, its line edit.
QLineEdit* field(const QWidget& window, const QString& name);
/// Replaces what is in the field, by the keyboard.
void type(const QWidget& window, const QString& name, const QString& text);

/// Types into one field after another.
void fillIn(const QWidget& window, const Texts& texts);
