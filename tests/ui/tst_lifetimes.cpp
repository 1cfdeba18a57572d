// SPDX-License-Identifier: MIT
#include "ui/account/DlgLoginCloundPlatform.h"
#include "ui/account/DlgLogoutCloundPlatform.h"
#include "ui/account/DlgRegisterR2V.h"
#include "ui/account/DlgResetPassword.h"

#include "support/CloudSpaceFixture.h"
#include "support/DialogFlows.h"

/// \file
/// Every flow of the dialogs is described once: what the user does, and what must happen. Here it is played
/// up to each point at which the module waits, for the platform or for the user, and ended there in every way
/// in which a host can end it. Nothing that would have followed may still happen.
namespace {

enum Ending
{
    Closed,
    Destroyed,
    ParentDestroyed,
    DestroyedWithClient,
    ClientDestroyed, ///< the window keeps working
    Quits
};
const char* const endings[]{"waiting window closed", "window destroyed", "parent destroyed",
    "window and client destroyed", "client destroyed", "application quits"};

const QByteArray tokens =
    R"({"code":0,"access_token":"A","refresh_token":"R","user_info":{"username":"<i>u</i>"}})";
const QString phone = "13800000000";
const QString signIn = "/auth/oauth/token?grant_type=password";
const QString byCodeTarget = "/auth/mobile/token/sms?mobile=SMS@13800000000&code=1&grant_type=mobile";

const Act registers =
    fills({{"User name", "n"}, {passwordField, "p"}, {accountField, phone}, {codeField, "1"}}, codeButton);
const Steps registered = asks("GET", "/admin/mobile/" + phone) + asks("POST", "/admin/api/user")
    + says("Account registration successfully!");
const Act resets = fills({{accountField, phone}, {"New password", "p"}, {codeField, "1"}}, codeButton);
const Steps isReset = asks("GET", "/admin/mobile/reset/" + phone) + asks("POST", "/admin/api/user/resetpw")
    + says("Password reset successfully!");
const auto signsIn = [](auto*, QWidget* parent) { return new DlgLoginCloundPlatform(parent); };

const QVector<Kind> accountKinds{
    {"sign-in", signsIn, {},
        {
            {"by code",
                {fills({{accountField, phone}}, codeButton), fills({{codeField, "1"}}, "Login"),
                    presses("Login")},
                refused(asks("GET", "/admin/mobile/" + phone)) + says(reason)
                    + refused(asks("POST", byCodeTarget)) + says(reason) + asks("POST", byCodeTarget, tokens)
                    + says("login successfully!")},
            {"by password",
                {[](QDialog& dialog) { openTab(dialog, PasswordTab); },
                    fills({{accountField, "n"}, {passwordField, "p"}}, "Login")},
                asks("POST", signIn, tokens) + says("login successfully!")},
            {"with a registration and a reset",
                {presses("User registration"), presses("Forget the password")},
                opens("User registration", {registers, presses("User registration")}) + registered
                    + opens("Reset password", {resets, presses("Reset")}) + isReset},
        }},
    {"registration", [](auto*, QWidget* parent) { return new DlgRegisterR2V(parent); }, {},
        {{"register", {registers, presses("User registration")}, registered}}},
    {"reset", [](auto*, QWidget* parent) { return new DlgResetPassword(parent); }, {},
        {{"reset", {resets, presses("Reset")}, isReset}}},
    {"sign-out",
        [](auto*, const QPointer<QWidget>& parent) {
            CloudAccountLogin::instance()->userLoginAccount("u", "p");
            return new DlgLogoutCloundPlatform(parent);
        },
        asks("POST", signIn, tokens),
        {{"sign out", {presses("Logout")},
            asks("POST", "/auth/oauth/check_token", R"({"user_info":{}})")
                + still(Anyway, asks("DELETE", "/auth/token/logout")) + says("exit successfully!")}}},
};

bool isRequest(const Step& step)
{
    return !step.method.isEmpty();
}

bool isTransfer(const Step& step)
{
    return isRequest(step) && (step.what.endsWith("/upload") || step.what.contains("/download"));
}

/// One flow, played until its cut and beyond.
struct Stage
{
    CloudSpaceFixture& fixture;
    const Kind& kind;
    const Acts& acts;
    const Steps steps;
    const int cut;
    const Ending ending;
    const bool isPatient;
    bool isCut = false;
    QPointer<QWidget> parent = new QWidget;
    QPointer<QDialog> dialog = {};

    /// Plays it; returns what came but must not, or did not come.
    QStringList play()
    {
        fixture.begin();
        if (isPatient) {
            CloudTransferOptions options; // with which transfers are jobs, in a window of their own
            options.limit = CloudTransferOptions::Limit::LastByte;
            fixture.client().setTransferOptions(options);
        }
        for (int i = 0; i < steps.size(); ++i)
            expect(i);
        parent->show();
        if (ending == Quits) {
            QTimer::singleShot(0, [this] { run(); });
            QCoreApplication::exec();
        } else {
            run();
        }
        delete dialog;
        delete parent;
        QStringList wrong = fixture.finish();
        if (QApplication::overrideCursor() || QApplication::activeModalWidget())
            wrong.append("something is left");
        return wrong;
    }

    void expect(int i)
    {
        fixture.expect({steps[i]}, [=] {
            if (i == cut)
                end();
        });
    }

    void run()
    {
        dialog = kind.make(&fixture.client(), parent);
        if (!isCut) {
            bringUp(*dialog);
            QCoreApplication::processEvents();
        }
        fixture.act(dialog, acts);
        if (ending == Quits)
            QCoreApplication::quit();
    }

    void end()
    {
        // A window that is still being built can neither be closed nor destroyed.
        isCut = ending == Quits || ending == ParentDestroyed || (ending != ClientDestroyed && dialog);
        if (isCut)
            fixture.expectNothing();
        for (int next = cut + 1; isCut && next < steps.size(); ++next)
            if (steps[next].goesOn == Anyway || (steps[next].goesOn == WhenClosed && ending == Closed))
                expect(next);
        if (ending == Closed && isCut)
            close();
        if (ending == Destroyed || ending == DestroyedWithClient)
            delete dialog;
        if (ending == ParentDestroyed)
            delete parent;
        if (ending == ClientDestroyed || (ending == DestroyedWithClient && isCut))
            fixture.destroyClient();
        if (ending == Quits)
            QCoreApplication::quit();
    }

    /// Closes the window that waits for the platform, or the one below the box or dialog in front, which the
    /// user then confirms.
    void close() const
    {
        const QPointer<QDialog> front(qobject_cast<QDialog*>(QApplication::activeModalWidget()));
        const bool isAbove = front && front != dialog && !isRequest(steps[cut]);
        (isAbove ? front->parentWidget()->window() : front ? front : dialog)->close();
        if (front && !steps[cut].acts.isEmpty())
            front->inherits("QFileDialog") ? steps[cut].acts.first()(*front) : front->accept();
    }
};

} // namespace

Q_DECLARE_METATYPE(Kind)

class TestLifetimes : public CloudSpaceTest
{
    Q_OBJECT

private slots:
    void nothingComesAfterTheEnd_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("ending");
        QTest::addColumn<bool>("isPatient");
        const QVector<Kind> all = accountKinds + kinds;
        for (int kind = 0; kind < all.size(); ++kind)
            for (int flow = 0; flow < all[kind].flows.size(); ++flow)
                for (int ending = Closed; ending <= Quits; ++ending)
                    if (kind >= accountKinds.size()
                        || (ending != ClientDestroyed && ending != DestroyedWithClient)) {
                        const Flow& one = all[kind].flows[flow];
                        QTest::addRow("%s, %s", qPrintable(one.name), endings[ending])
                            << all[kind] << flow << ending << false;
                        if (std::any_of(one.steps.cbegin(), one.steps.cend(), isTransfer))
                            QTest::addRow("%s, patiently, %s", qPrintable(one.name), endings[ending])
                                << all[kind] << flow << ending << true;
                    }
    }

    void nothingComesAfterTheEnd()
    {
        QFETCH(Kind, kind);
        QFETCH(int, index);
        QFETCH(int, ending);
        QFETCH(bool, isPatient);
        const Flow& flow = kind.flows[index];
        const Steps steps = kind.opening + flow.steps;
        const int first = index == 0 ? 0 : kind.opening.size(); // of one kind, all have the same opening
        for (int cut = first - (ending == Closed); cut < steps.size(); ++cut) { // closed: at first not at all
            const bool isCut = cut >= first;
            const QString where = isCut ? QString("%1, %2").arg(cut).arg(steps[cut].what) : "uncut";
            const bool ends = cut + 1 == steps.size() || steps[cut + 1].goesOn != Anyway; // an operation
            int last = 0;
            for (int refusals = 0; refusals <= last; ++refusals) {
                Steps played = steps;
                if (refusals > 0)
                    played[cut].answer = refusal;
                Stage stage{*fixture, kind, flow.acts, played, isCut ? cut : -1, Ending(ending), isPatient};
                const QStringList wrong = stage.play();
                QVERIFY2(wrong.isEmpty() && !QTest::currentTestFailed(),
                    qPrintable(where + ": " + wrong.join("; ")));
                last = stage.isCut && ending <= Destroyed && ends && isRequest(steps[cut]);
            }
        }
    }
};

QTEST_MAIN(TestLifetimes)
#include "tst_lifetimes.moc"
