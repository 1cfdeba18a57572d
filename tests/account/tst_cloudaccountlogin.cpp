// SPDX-License-Identifier: MIT
#include "account/CloudAccountLogin.h"
#include "net/BuildConstants.h"
#include "net/ReplyEnvelope.h"
#include "support/MultipartForm.h"
#include "support/PublicOperations.h"
#include "support/TestConstants.h"

#include <QTest>

using namespace tav;

namespace {
const QByteArray tokens =
    R"({"access_token":"A1","refresh_token":"R1","user_info":{"username":"server-name","password":"x"}})";
const QByteArray newTokens = R"({"code":0,"access_token":"A2","refresh_token":"R2"})";
const QByteArray known = R"({"user_info":{}})";
const QByteArray expired = R"({"error":"invalid_token","error_description":"Token失效"})";

/// One operation of the session: what it sends, and what a success changes in the session.
struct Operation
{
    const char* name;
    std::function<bool(CloudAccountLogin&)> call;
    QByteArray method;
    QByteArray target;
    QByteArray content; ///< as contentOf() has it
    QByteArray success;
    QStringList state{"", "", "", ""}; ///< mobile, user name, token, refresh token
};

const QByteArray encoded = "application/x-www-form-urlencoded";

// The cipher text of "pa ss&=%2", from another program, has "+", "/" and "=" in its Base64.
const QVector<Operation> operations{
    {"userLoginAccount",
        [](CloudAccountLogin& s) { return s.userLoginAccount("用 户&a=b%20+@x", "pa ss&=%2"); }, "POST",
        "/auth/oauth/token?grant_type=password",
        encoded + "username=用 户&a=b%20+@x&password=slH%2BTXrP5NkUVM%2FFYKVtbw%3D%3D&scope=server", tokens,
        {"用 户&a=b%20+@x", "server-name", "A1", "R1"}},
    {"resetPassword",
        [](CloudAccountLogin& s) { return s.resetPassword("13800000000", "pa ss&=%2", "1234"); }, "POST",
        "/admin/api/user/resetpw",
        encoded + "phone=13800000000&password=slH%2BTXrP5NkUVM%2FFYKVtbw%3D%3D&smscode=1234",
        R"({"code":0})"},
    {"mobileVerify", [](CloudAccountLogin& s) { return s.mobileVerify("13800000000"); }, "GET",
        "/admin/mobile/13800000000", "", R"({"code":0,"data":true})"},
    {"mobileVerify2", [](CloudAccountLogin& s) { return s.mobileVerify2("13800000000"); }, "GET",
        "/admin/mobile/reset/13800000000", "", R"({"code":0})"},
    {"emailVerify", [](CloudAccountLogin& s) { return s.emailVerify("a+b@c.d"); }, "GET",
        "/admin/mail/a+b@c.d", "", R"({"code":0,"data":"sent"})"},
    {"emailVerify2", [](CloudAccountLogin& s) { return s.emailVerify2("a+b@c.d"); }, "GET",
        "/admin/mail/reset/a+b@c.d", "", R"({"code":"0","data":1})"},
    {"phoneLoginAccount", [](CloudAccountLogin& s) { return s.phoneLoginAccount("138", "12 34"); }, "POST",
        "/auth/mobile/token/sms?mobile=SMS@138&code=12%2034&grant_type=mobile", encoded, tokens,
        {"138", "server-name", "A1", "R1"}},
    {"phoneLoginAccount by mail", [](CloudAccountLogin& s) { return s.phoneLoginAccount("a@b.c", "1"); },
        "POST", "/auth/mobile/token/sms?mobile=MAIL@a@b.c&code=1&grant_type=mobile", encoded, tokens,
        {"a@b.c", "server-name", "A1", "R1"}},
    {"registerUser", [](CloudAccountLogin& s) { return s.registerUser("用户", "pa ss&=%2", "138", "1"); },
        "POST", "/admin/api/user",
        part("password", "slH+TXrP5NkUVM/FYKVtbw==") + part("phone", "138") + part("smscode", "1")
            + part("username", "用户"),
        "{}"},
    {"registerUserByMail",
        [](CloudAccountLogin& s) { return s.registerUserByMail("u", "hello", "a@b.c", "1"); }, "POST",
        "/admin/api/user/mail/register",
        part("mail", "a@b.c") + part("mailCode", "1") + part("password", "MB+o8xg7mCBZ5F7ajwRQ4w=="),
        R"({"code":0})"},
};

QStringList stateOf(const CloudAccountLogin& session)
{
    return {session.getMobile(), session.getUserName(), session.getToken(), session.getRefreshToken()};
}
} // namespace

class TestCloudAccountLogin : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        peer = std::make_unique<ScriptedPeer>();
        setPlatformAddress(peer->address());
        session = CloudAccountLogin::instance();
        pristine = new CloudAccountLogin(*session);
    }

    void init() { *session = *pristine; }

    void everyOperationHasARow()
    {
        QStringList missing = publicOperations("account/CloudAccountLogin.h");
        QVERIFY(missing.size() >= 10);
        missing.removeAll("logout"); // up to three requests: it has a table of its own
        for (const Operation& operation : operations)
            missing.removeAll(operation.name);
        QVERIFY2(missing.isEmpty(), qPrintable(missing.join(' ')));
    }

    void sendsItsRequestAndTakesTheReply_data() { rows(); }

    void sendsItsRequestAndTakesTheReply()
    {
        QFETCH(int, index);
        const Operation& operation = operations[index];
        peer->expect("GET", "/admin/mobile/1", behaviour::answer(R"({"code":1,"msg":"earlier"})"));
        QVERIFY(!session->mobileVerify("1"));
        peer->expect(operation.method, operation.target, behaviour::answer(operation.success));
        const int before = peer->requests().size();
        QVERIFY2(operation.call(*session), qPrintable(session->getLastError()));
        const RecordedRequest request = peer->requests().value(before);
        const bool asClient = operation.method != "GET";
        QCOMPARE(request.header("Authorization"), asClient ? clientCredential().toUtf8() : QByteArray());
        QCOMPARE(contentOf(request), operation.content);
        QVERIFY(!request.raw.contains("pa ss") && !request.raw.contains("hello"));
        QCOMPARE(stateOf(*session), operation.state);
        QCOMPARE(session->getLoginState(), QByteArray(operation.name).contains("Login"));
        QCOMPARE(session->getLastError(), QString("earlier")); // a success keeps it
    }

    void nullPointersCountAsEmptyTexts()
    {
        peer->expect("POST", "/admin/api/user/resetpw", behaviour::answer("{}"));
        QVERIFY(session->resetPassword(nullptr, nullptr, nullptr));
        QCOMPARE(peer->requests().last().body, QByteArray("phone=&password=&smscode="));
    }

    void refusalsChangeNothingElse_data() { rows(); }

    void refusalsChangeNothingElse()
    {
        QFETCH(int, index);
        const Operation& operation = operations[index];
        const QByteArray name = operation.name;
        struct Refusal
        {
            QByteArray reply;
            QString text;
            CloudFailure failure = CloudFailure::Refused;
        };
        QVector<Refusal> refusals{
            {R"({"code":1,"msg":"不 duplicate entry"})", "不 duplicate entry"},
            {R"({"code":401,"msg":"m"})", "m"},
            {R"({"code":1})", ""},
            {"[]", replyUnusable(), CloudFailure::Unusable},
        };
        if (name.contains("erify")) // a code is sent only when the reply says so
            refusals += {{R"({"code":0,"data":false,"msg":"wait"})", "wait"},
                {R"({"code":0,"data":"false"})", ""}, {R"({"data":true,"msg":"m"})", "m"}, {"{}", ""}};
        if (name.startsWith("register"))
            refusals +=
                {{R"({"code":1,"msg":"x: Duplicate entry '138'"})", "The phone number is registered"}};
        signIn();
        QStringList state = stateOf(*session);
        if (name.contains("Login"))
            state[0] = operation.state[0]; // what was typed is kept
        for (const auto& [reply, text, failure] : refusals) {
            peer->expect(operation.method, operation.target, behaviour::answer(reply));
            QVERIFY2(!operation.call(*session), reply);
            QCOMPARE(session->getLastError(), text);
            QCOMPARE(session->getLastFailure(), failure);
            QCOMPARE(stateOf(*session), state);
            QVERIFY(session->getLoginState());
        }
    }

    /// A timer of the host signs somebody else in meanwhile.
    void aTokenStaysWithItsAccount()
    {
        const QByteArray path = "/auth/oauth/token?grant_type=password";
        const auto inside = [this](const QByteArray& reply) {
            return [this, reply](PeerConnection& c) {
                QMetaObject::invokeMethod(
                    QCoreApplication::instance(), [this] { session->userLoginAccount("inner", "hello"); },
                    Qt::BlockingQueuedConnection);
                behaviour::answer(reply)(c);
            };
        };
        peer->expect("POST", path, inside(tokens));
        peer->expect("POST", path, behaviour::closeUnread());
        QVERIFY(session->userLoginAccount("outer", "hello"));
        QCOMPARE(stateOf(*session), QStringList({"outer", "server-name", "A1", "R1"}));

        peer->expect("POST", "/auth/oauth/check_token", behaviour::answer(known));
        peer->expect("DELETE", "/auth/token/logout", inside("{}"));
        peer->expect("POST", path, behaviour::answer(newTokens));
        QVERIFY(session->logout());
        QVERIFY(session->getLoginState());
        QCOMPARE(stateOf(*session), QStringList({"inner", "", "A2", "R2"}));
    }

    void signsOutAfterCheckingTheToken()
    {
        const QStringList first{"A1", "R1"};
        const QStringList second{"A2", "R2"};
        const struct
        {
            QList<QByteArray> replies; // to check, refresh if the check fails, logout
            bool good;
            QString error;
            QStringList tokens;
        } rows[]{
            {{known, R"({"code":0})"}, true, "", first},
            {{known, R"({"code":1,"msg":"no"})"}, false, "no", first},
            {{known, "<html>"}, false, replyUnusable(), first},
            {{expired, newTokens, "{}"}, true, "invalid_token:Token失效", second},
            {{"{}", newTokens, "{}"}, true, ":", second},
            {{"<html>", newTokens, "{}"}, true, replyUnusable(), second},
            {{expired, R"({"code":1,"msg":"sign in again"})"}, false, "sign in again", first},
            {{expired, "1"}, false, replyUnusable(), first},
        };
        for (const auto& [replies, good, error, tokens] : rows) {
            init();
            signIn();
            const bool refreshes = replies[0] != known;
            const bool endsSession = replies.size() == (refreshes ? 3 : 2);
            peer->expect("POST", "/auth/oauth/check_token", behaviour::answer(replies[0]));
            if (refreshes)
                peer->expect(
                    "POST", "/auth/oauth/token?grant_type=refresh_token", behaviour::answer(replies[1]));
            if (endsSession)
                peer->expect("DELETE", "/auth/token/logout", behaviour::answer(replies.last()));
            const int before = peer->requests().size();
            QCOMPARE(session->logout(), good);
            QCOMPARE(session->getLastError(), error);
            QCOMPARE(session->getLoginState(), !good);
            const auto refused = refreshes ? CloudFailure::SignedOut : CloudFailure::Refused;
            const auto failed = error == replyUnusable() ? CloudFailure::Unusable : refused;
            QCOMPARE(session->getLastFailure(), error.isEmpty() ? CloudFailure::None : failed);
            QVERIFY(!good || !session->logout()); // nobody is signed in any more
            QCOMPARE(stateOf(*session), QStringList({"user", "server-name"}) + tokens);

            const QVector<RecordedRequest> sent = peer->requests().mid(before);
            QCOMPARE(sent[0].body, QByteArray("token=A1"));
            QCOMPARE(sent[0].header("Authorization"), clientCredential().toUtf8());
            if (refreshes) {
                QCOMPARE(sent[1].body, QByteArray("refresh_token=R1&scope=server"));
                QCOMPARE(sent[1].header("Authorization"), refreshBearer().toUtf8());
            }
            if (endsSession)
                QCOMPARE(sent.last().header("Authorization"), "Bearer " + tokens[0].toUtf8());
        }
    }

    void cleanup() { peer->settle(); }

    void cleanupTestCase()
    {
        const QStringList wrong = peer->finish();
        QVERIFY2(wrong.isEmpty(), qPrintable(wrong.join("; ")));
    }

private:
    static void rows()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < operations.size(); ++i)
            QTest::newRow(operations[i].name) << i;
    }

    void signIn()
    {
        peer->expect("POST", "/auth/oauth/token?grant_type=password", behaviour::answer(tokens));
        QVERIFY(session->userLoginAccount("user", "hello"));
    }

    /// The session's address is fixed when it is first used, so one peer serves all tests.
    std::unique_ptr<ScriptedPeer> peer;
    CloudAccountLogin* session = nullptr;
    /// Its state before the first use. Only the session itself is ever destroyed: its destructor is private.
    const CloudAccountLogin* pristine = nullptr;
};

QTEST_GUILESS_MAIN(TestCloudAccountLogin)
#include "tst_cloudaccountlogin.moc"
