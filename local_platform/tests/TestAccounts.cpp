// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <QDir>

class TestAccounts : public QObject
{
    Q_OBJECT

private slots:
    void signInByNamePhoneOrMail()
    {
        for (const QByteArray login : {"bob", "13800000002", "bob@example.com"}) {
            const Answer answer = m_platform.signIn(login, PlatformUnderTest::wirePassword("bob"));
            QVERIFY2(answer.ok(), answer.body);
            QCOMPARE(userOf(answer), QString("bob"));
        }
    }

    void refusals()
    {
        const QByteArray client = m_platform.asClient().authorization();
        const QByteArray password = "oauth/token?grant_type=password";
        const QByteArray refresh = "oauth/token?grant_type=refresh_token";
        const QByteArray alice = "username=alice&password=" + PlatformUnderTest::wirePassword("alice");
        const QString wrong = "The user name or the password is wrong";
        const std::tuple<QByteArray, QByteArray, QByteArray, QString> requests[]{
            {client, password, "username=alice&password=eA%3D%3D", wrong},
            {client, password, "username=alice&password=demo-alice-1", wrong},
            {client, password, "username=nobody&password=eA%3D%3D", wrong},
            {"Basic eDp5", password, alice, "The client credential is wrong"},
            {client, refresh, "refresh_token=x", "The refresh credential is wrong"},
            {"Bearer tav-local-refresh", refresh, "refresh_token=x",
                "The refresh token is unknown or has expired"},
            {client, "mobile/token/sms?mobile=SMS@13800000003&code=123456&grant_type=mobile", "",
                "There is no valid verification code; ask for a new one"},
        };
        for (const auto& [authorization, path, body, msg] : requests) {
            const Answer answer = Client(m_platform.port(), authorization).post("/auth/" + path, body);
            QCOMPARE(answer.msg(), msg);
            QVERIFY(answer.status >= 400);
            QCOMPARE(answer.code(), 1);
            QVERIFY(!answer.json().contains("access_token"));
        }
    }

    void tokenLife()
    {
        PlatformUnderTest platform({"--token-lifetime", "3600"});
        const QJsonObject pair = platform.signIn("alice", PlatformUnderTest::wirePassword("alice")).json();
        const QByteArray token = pair.value("access_token").toString().toLatin1();
        const auto msgFor = [&](const QByteArray& bearer) {
            return Client(platform.port(), "Bearer " + bearer).get("/project/cloudAddressBook/list").msg();
        };
        const auto signOut = [&](const QByteArray& bearer) {
            return Client(platform.port(), "Bearer " + bearer).del("/auth/token/logout").msg();
        };
        const auto checked = [&] {
            return platform.asClient().post("/auth/oauth/check_token", "token=" + token).json();
        };
        QCOMPARE(msgFor(token), QString("success"));
        QVERIFY(checked().contains("user_info"));

        platform.restart({"--clock-offset", "3601"});
        QCOMPARE(msgFor(token), QString("Token失效"));
        QCOMPARE(signOut(token), QString("Token失效"));
        QCOMPARE(checked().value("error").toString(), QString("invalid_token"));
        QCOMPARE(checked().value("error_description").toString(), QString("Token has expired"));
        QVERIFY(!checked().contains("user_info"));

        const QByteArray body = "refresh_token=" + pair.value("refresh_token").toString().toLatin1();
        const auto refreshed = [&] {
            return Client(platform.port(), "Bearer tav-local-refresh")
                .post("/auth/oauth/token?grant_type=refresh_token", body + "&scope=server");
        };
        const QByteArray renewed = refreshed().json().value("access_token").toString().toLatin1();
        QVERIFY2(!refreshed().ok(), "a refresh token works once");
        QCOMPARE(msgFor(renewed), QString("success"));
        QCOMPARE(signOut(renewed), QString("success"));
        QCOMPARE(msgFor(renewed), QString("Token失效"));
    }

    void codesAreSentOnlyWhereTheyMayBe()
    {
        const QPair<QByteArray, bool> requests[]{
            {"mail/new@example.com", true},
            {"mobile/reset/13800000001", true},
            {"mail/reset/nobody@example.com", false},
            {"mail/abc", false},
            {"mail/..%2F..%2Fx@y", false},
        };
        const QDir outbox(m_platform.data() + "/outbox");
        for (const auto& [path, sent] : requests) {
            const int before = outbox.entryList(QDir::Files).size();
            const Answer answer = Client(m_platform.port()).get("/admin/" + path);
            QVERIFY2((answer.ok() && answer.data().toBool()) == sent, path);
            QCOMPARE(outbox.entryList(QDir::Files).size(), before + (sent ? 1 : 0));
        }
    }

    void registration()
    {
        const QByteArray mail = "erik+tag@example.com";
        QVERIFY(registerAs("dora", "13922220000").ok());
        QCOMPARE(userOf(m_platform.signIn("13922220000", "c2VjcmV0")), QString("dora"));
        QVERIFY(registerAs({}, mail).ok());
        QCOMPARE(userOf(m_platform.signIn(mail, "c2VjcmV0")), QString(mail));

        const std::tuple<QByteArray, QByteArray, QString> refusals[]{
            {"fred", "13800000001", "Duplicate entry"},
            {{}, "alice@example.com", "Duplicate entry"},
            {"alice", "13933330000", "The user name is taken"},
            {"13800000001", "13933330001", "A user name cannot look like a phone number"},
        };
        for (const auto& [name, address, msg] : refusals) {
            const Answer answer = registerAs(name, address);
            QVERIFY2(answer.code() == 1 && answer.msg().startsWith(msg), answer.body);
        }
    }

    void codeSignIn()
    {
        QCOMPARE(
            userOf(signInByCode("MAIL", "carol@example.com", sentTo("carol@example.com"))), QString("carol"));
        QVERIFY2(!signInByCode("SMS", "13944440000", sentTo("13944440000")).ok(), "nobody has this number");
    }

    void reset()
    {
        PlatformUnderTest platform;
        const Client old = platform.signedIn("alice");
        QVERIFY(Client(platform.port()).get("/admin/mobile/reset/13800000001").ok());
        const QByteArray body =
            "phone=13800000001&password=bmV3Kys%3D&smscode=" + platform.sentCode("13800000001");
        QVERIFY(platform.asClient().post("/admin/api/user/resetpw", body).ok());
        QVERIFY(!platform.signIn("alice", PlatformUnderTest::wirePassword("alice")).ok());
        QVERIFY(platform.signIn("alice", "bmV3Kys%3D").ok());
        QCOMPARE(old.get("/project/cloudAddressBook/list").msg(), QString("Token失效"));
        platform.restart();
        QVERIFY2(
            platform.signIn("alice", "bmV3Kys%3D").ok(), "a start must not bring the demo password back");
    }

    void codeIsForOnePurposeOneUseAndFiveTries()
    {
        const QByteArray phone = "13800000002";
        const QByteArray code = sentTo(phone);
        QVERIFY2(
            !m_platform.asClient()
                 .post("/admin/api/user/resetpw", "phone=" + phone + "&password=eA%3D%3D&smscode=" + code)
                 .ok(),
            "a sign-in code resets nothing");
        QVERIFY2(!signInByCode("SMS", "13800000003", code).ok(), "a code is for one number");
        QVERIFY(signInByCode("SMS", phone, code).ok());
        QVERIFY2(!signInByCode("SMS", phone, code).ok(), "a code works once");

        const QByteArray next = sentTo(phone);
        const QByteArray wrong = next == "000000" ? "000001" : "000000";
        for (int i = 0; i < 5; ++i)
            QCOMPARE(signInByCode("SMS", phone, wrong).msg(), QString("The verification code is wrong"));
        QCOMPARE(signInByCode("SMS", phone, next).msg(),
            QString("Too many wrong verification codes; ask for a new one"));

        for (int i = 2; i < 20; ++i)
            sentTo(phone);
        QCOMPARE(Client(m_platform.port()).get("/admin/mobile/" + phone).msg(),
            QString("Too many codes were asked for; try again later"));
    }

    void codeEnds()
    {
        PlatformUnderTest platform({"--code-lifetime", "600"});
        QVERIFY(Client(platform.port()).get("/admin/mobile/13800000001").ok());
        const QByteArray path = "/auth/mobile/token/sms?mobile=SMS@13800000001&grant_type=mobile&code="
            + platform.sentCode("13800000001");
        platform.restart({"--clock-offset", "601"});
        QVERIFY(!platform.asClient().post(path).ok());
        platform.restart({"--clock-offset", "590"});
        QVERIFY(platform.asClient().post(path).ok());
    }

private:
    static QString userOf(const Answer& signedIn)
    {
        return signedIn.json().value("user_info").toObject().value("username").toString();
    }

    /// A code that was asked for just now.
    QByteArray sentTo(const QByteArray& address) const
    {
        Client(m_platform.port()).get((address.contains('@') ? "/admin/mail/" : "/admin/mobile/") + address);
        return m_platform.sentCode(address);
    }

    /// By phone, or by mail without a \a name.
    Answer registerAs(const QByteArray& name, const QByteArray& address) const
    {
        const QByteArray code = sentTo(address);
        return name.isEmpty()
            ? m_platform.asClient().postForm("/admin/api/user/mail/register",
                {{"mail", address}, {"mailCode", code}, {"password", "c2VjcmV0"}})
            : m_platform.asClient().postForm("/admin/api/user",
                {{"password", "c2VjcmV0"}, {"phone", address}, {"smscode", code}, {"username", name}});
    }

    Answer signInByCode(const QByteArray& way, const QByteArray& address, const QByteArray& code) const
    {
        return m_platform.asClient().post(
            "/auth/mobile/token/sms?mobile=" + way + "@" + address + "&code=" + code + "&grant_type=mobile");
    }

    PlatformUnderTest m_platform;
};

QTEST_GUILESS_MAIN(TestAccounts)
#include "TestAccounts.moc"
