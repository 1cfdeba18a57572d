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

/// What the fields and buttons that several dialogs have are called.
const QString account = "Phone number/email";
const QString code = "Verification";
const QString word = "Password";
const QString askForCode = "Obtaining verification code";

using Texts = QVector<QPair<QString, QString>>;

/// What the tests of the account dialogs have in common: the platform, the message boxes, a working directory
/// for the account file, and a hand for mouse and keys. The session takes its address once, so there is one
/// peer for all tests of a program.
class DialogFixture
{
public:
    DialogFixture();
    virtual ~DialogFixture() = default;

    /// A session that nobody has signed in to, an empty folder and an empty script: for every test's begin.
    void begin();
    /// For every test's end: fails it when a box, a request or a dialog is missing or was another one.
    void end();
    /// Ends without failing: what was missing or other than expected.
    virtual QStringList finish();

    /// The platform answers the next request with \a json.
    void expect(const QByteArray& method, const QByteArray& target, const QByteArray& json);
    /// The same, but once the request is there \a meanwhile runs, in the GUI thread, before the answer comes.
    void expectAndHold(const QByteArray& method, const QByteArray& target, const QByteArray& json,
        const std::function<void()>& meanwhile);
    /// No request any more.
    void expectNothing() { peer.expectNothing(); }
    /// The requests of this test.
    QVector<RecordedRequest> requests() { return peer.requests(); }

    MessageBoxScript& boxes() { return *script; }

private:
    ScriptedPeer peer;
    std::unique_ptr<QTemporaryDir> scratch;
    std::unique_ptr<MessageBoxScript> script;
    QObject gui; ///< gets what the peer's threads have to do here
};

/// A test program on the account dialogs: every test begins and ends with the fixture.
class DialogTest : public QObject
{
    Q_OBJECT

protected slots:
    void initTestCase() { fixture = std::make_unique<DialogFixture>(); }
    void cleanupTestCase() { fixture.reset(); }
    void init() { fixture->begin(); }
    void cleanup() { fixture->end(); }

protected:
    std::unique_ptr<DialogFixture> fixture;
};

/// Shows \a dialog as its user has it in front.
void bringUp(QDialog& dialog);

/// The visible button of that text, or null.
QPushButton* button(const QWidget& window, const QString& text);
void press(const QWidget& window, const QString& text);
/// Presses a link of \a dialog, and lets \a play be the user of the dialog that comes up.
void follow(const QDialog& dialog, const QString& link, const std::function<void(QDialog&)>& play);

enum Tab
{
    CodeTab,
    PasswordTab
};
void openTab(const QDialog& dialog, Tab tab);

/// The visible field that a screen reader calls \a name, or null; of a combo box, its line edit.
QLineEdit* field(const QWidget& window, const QString& name);
/// Replaces what is in the field, by the keyboard.
void type(const QWidget& window, const QString& name, const QString& text);

/// Types into one field after another.
void fillIn(const QWidget& window, const Texts& texts);
