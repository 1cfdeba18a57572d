// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <QDir>

class TestAccounts : public QObject
{
    Q_OBJECT

private slots:
    void signInByNamePhoneOrMail()
    {
        for (const QByteArray login : {"bob", "13800000002", "bob@example.com"})
            QCOMPARE(
                userOf(m_platform.signIn(login, PlatformUnderTest::wirePassword("bob"))), QString("bob"));
    }

    void refusals()
    {
        const QByteArray client = m_platform.asClient().authorization();
        const QByteArray password = "oauth/token?grant_type=password";
        const QByteArray refresh = "oauth/token?grant_type=refresh_token";
        const QByteArray alice = "username=alice&password=" + PlatformUnderTest::wirePassword("alice");
        const QByteArray wrong = "The user name or the password is wrong";
        const std::tuple<QByteArray, QByteArray, QByteArray, QByteArray> requests[]{
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
            const Answer answer = m_platform.as(authorization).post("/auth/" + path, body);
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
        const auto as = [&](const QByteArray& bearer) { return platform.as("Bearer " + bearer); };
        const QByteArray list = "cloudAddressBook/list";
        const QByteArray signOut = "/auth/token/logout";
        const auto check = [&] {
            return platform.asClient().post("/auth/oauth/check_token", "token=" + token).json();
        };
        QCOMPARE(as(token).get(list).msg(), QByteArray("success"));
        QVERIFY(check().contains("user_info"));

        platform.restart({"--clock-offset", "3601"});
        QCOMPARE(as(token).get(list).msg(), QByteArray("Token失效"));
        QCOMPARE(as(token).del(signOut).msg(), QByteArray("Token失效"));
        QCOMPARE(check().value("error").toString(), QString("invalid_token"));
        QCOMPARE(check().value("error_description").toString(), QString("Token has expired"));
        QVERIFY(!check().contains("user_info"));

        const QByteArray body =
            "scope=server&refresh_token=" + pair.value("refresh_token").toString().toLatin1();
        const auto refresh = [&] {
            return as("tav-local-refresh").post("/auth/oauth/token?grant_type=refresh_token", body);
        };
        const QByteArray renewed = refresh().json().value("access_token").toString().toLatin1();
        QVERIFY2(!refresh().ok(), "a refresh token works once");
        QCOMPARE(as(renewed).get(list).msg(), QByteArray("success"));
        QCOMPARE(as(renewed).del(signOut).msg(), QByteArray("success"));
        QCOMPARE(as(renewed).get(list).msg(), QByteArray("Token失效"));
    }

    void codesAreSentOnlyWhereTheyMayBe()
    {
        const std::tuple<QByteArray, bool, bool> requests[]{
            {"mail/new@example.com", true, true},
            {"mobile/reset/13800000001", true, true},
            {"mail/reset/nobody@example.com", true, false}, // who asks must not learn that
            {"mail/abc", false, false},
            {"mobile/1234", false, false},
            {"mail/..%2F..%2Fx@y", false, false},
        };
        const QDir outbox(m_platform.data() + "/outbox");
        for (const auto& [path, good, sent] : requests) {
            const int before = outbox.entryList(QDir::Files).size();
            const Answer answer = m_platform.as().get("/admin/" + path);
            QVERIFY2((answer.ok() && answer.data() == "true") == good, path);
            QCOMPARE(outbox.entryList(QDir::Files).size(), before + (sent ? 1 : 0));
        }
    }

    void resetTellsNobodyWhoHasAnAccount()
    {
        QByteArrayList answers;
        for (const QByteArray address : {"13800000003", "13955550000"}) {
            QVERIFY(m_platform.as().get("/admin/mobile/reset/" + address).ok());
            const QByteArray body = "phone=" + address + "&password=eA%3D%3D&smscode=";
            for (int i = 0; i < 7; ++i)
                answers += m_platform.asClient().post("/admin/api/user/resetpw", body + "x").body;
        }
        QCOMPARE(answers.mid(0, 7), answers.mid(7));
    }

    void registration()
    {
        const QByteArray mail = "erik+tag@example.com";
        QVERIFY(registerAs("dora", "13922220000").ok());
        QCOMPARE(userOf(m_platform.signIn("13922220000", "c2VjcmV0")), QString("dora"));
        QVERIFY(registerAs({}, mail).ok());
        QCOMPARE(userOf(m_platform.signIn(mail, "c2VjcmV0")), QString(mail));
        QVERIFY(registerAs("Jürgen", "13922220001").ok());
        QCOMPARE(userOf(m_platform.signIn("J%55%CC%88RGEN", "c2VjcmV0")), QString("Jürgen"));

        const std::tuple<QByteArray, QByteArray, QByteArray> refusals[]{
            {"fred", "13800000001", "Duplicate entry"},
            {{}, "alice@example.com", "Duplicate entry"},
            {"alice", "13933330000", "The user name is taken"},
            {"ALICE", "13933330000", "The user name is taken"},
            {"ａｌｉｃｅ", "13933330000", "The user name is taken"},
            {"Ju\xcc\x88rgen", "13933330000", "The user name is taken"},
            {"bо\xd0\xac", "13933330000",
                "A user name has no invisible"}, // Cyrillic letters after a Latin one
            {"al\xe2\x80\x8bice", "13933330000", "A user name has no invisible"},
            {"a\nb", "13933330000", "A user name has no spaces"},
            {QByteArray(101, 'x'), "13933330000", "A user name has no spaces"},
            {"x＠y", "13933330000", "A user name cannot look like a phone number"},
            {"13800000001", "13933330001", "A user name cannot look like a phone number"},
        };
        for (const auto& [name, address, msg] : refusals) {
            const Answer answer = registerAs(name, address);
            QVERIFY2(answer.code() == 1 && answer.msg().startsWith(msg), answer.body);
        }
    }

    void reset()
    {
        PlatformUnderTest platform;
        const Client old = platform.signedIn("alice");
        const QByteArray phone = "13800000001";
        QVERIFY(platform.as().get("/admin/mobile/reset/" + phone).ok());
        const QByteArray body = "phone=" + phone + "&password=bmV3Kys%3D&smscode=" + platform.sentCode(phone);
        QVERIFY(platform.asClient().post("/admin/api/user/resetpw", body).ok());
        QVERIFY(!platform.signIn("alice", PlatformUnderTest::wirePassword("alice")).ok());
        QCOMPARE(old.get("cloudAddressBook/list").msg(), QByteArray("Token失效"));
        platform.restart();
        QVERIFY2(platform.signIn("alice", "bmV3Kys%3D").ok(), "a start does not bring the old password back");
    }

    void codeIsForOnePurposeOneUseAndFiveTries()
    {
        QCOMPARE(
            userOf(signInByCode("MAIL", "carol@example.com", sentTo("carol@example.com"))), QString("carol"));
        QVERIFY2(!signInByCode("SMS", "13944440000", sentTo("13944440000")).ok(), "nobody has this number");

        const QByteArray phone = "13800000002";
        const QByteArray code = sentTo(phone);
        const QByteArray reset = "phone=" + phone + "&password=eA%3D%3D&smscode=" + code;
        QVERIFY2(!m_platform.asClient().post("/admin/api/user/resetpw", reset).ok(),
            "a sign-in code resets nothing");
        QVERIFY2(!signInByCode("SMS", "13800000003", code).ok(), "a code is for one number");
        QVERIFY(signInByCode("SMS", phone, code).ok());
        QVERIFY2(!signInByCode("SMS", phone, code).ok(), "a code works once");

        const QByteArray next = sentTo(phone);
        const QByteArray wrong = next == "000000" ? "000001" : "000000";
        for (int i = 0; i < 5; ++i)
            QCOMPARE(signInByCode("SMS", phone, wrong).msg(), QByteArray("The verification code is wrong"));
        QCOMPARE(signInByCode("SMS", phone, next).msg(),
            QByteArray("Too many wrong verification codes; ask for a new one"));

        for (int i = 2; i < 20; ++i)
            sentTo(phone);
        QCOMPARE(m_platform.as().get("/admin/mobile/" + phone).msg(),
            QByteArray("Too many codes were asked for; try again later"));
    }

    void guessesEndForWhoGuesses()
    {
        const PlatformUnderTest platform;
        const Client here = platform.asClient();
        const Client elsewhere = here.from("127.0.0.2");
        const QByteArray tooMany = "Too many wrong attempts; try again later";
        const auto signIn = [](const Client& client, const QByteArray& user, const QByteArray& password) {
            return client
                .post("/auth/oauth/token?grant_type=password", "username=" + user + "&password=" + password)
                .msg();
        };
        const QByteArray bobs = PlatformUnderTest::wirePassword("bob");
        for (int i = 0; i < 10; ++i)
            QCOMPARE(signIn(elsewhere, i % 2 == 0 ? "bob" : "BOB", "eA%3D%3D"),
                QByteArray("The user name or the password is wrong"));
        QCOMPARE(signIn(elsewhere, "bob", bobs), tooMany);
        QCOMPARE(signIn(elsewhere, "alice", PlatformUnderTest::wirePassword("alice")), QByteArray("success"));
        QCOMPARE(signIn(here, "bob", bobs), QByteArray("success"));

        const Client carol = platform.signedIn("carol");
        const QByteArray extract = "cloudProjectShare/extractByCode?sourceClient=S&extractionCode=";
        for (int i = 0; i < 10; ++i)
            QCOMPARE(carol.get(extract + QByteArray::number(i)).status, 404);
        QCOMPARE(carol.get(extract + "x").msg(), tooMany);
        QCOMPARE(platform.signedIn("alice").get(extract + "x").status, 404);
    }

    void nobodyUsesUpAnothersCodes()
    {
        const PlatformUnderTest platform;
        const Client here = platform.asClient();
        const Client elsewhere = here.from("127.0.0.2");
        const QByteArray send = "/admin/mobile/13800000001";
        const auto signIn = [](const Client& client, const QByteArray& code) {
            return client.post(
                "/auth/mobile/token/sms?mobile=SMS@13800000001&grant_type=mobile&code=" + code);
        };
        QVERIFY(here.get(send).ok());
        const QByteArray code = platform.sentCode("13800000001");
        for (int i = 0; i < 9; ++i)
            QVERIFY(!signIn(elsewhere, "x").ok());
        QVERIFY2(!signIn(elsewhere, code).ok(), "the tries of strangers are over");
        for (int i = 0; i < 20; ++i)
            QVERIFY(elsewhere.get(send).ok());
        QCOMPARE(elsewhere.get(send).status, 429);
        QVERIFY(signIn(here, code).ok());
        QVERIFY(here.get(send).ok());
        int sent = 0;
        while (sent < 200 && elsewhere.get("/admin/mobile/139" + QByteArray::number(10000 + sent)).ok())
            ++sent;
        QCOMPARE(sent, 80); // a hundred an hour
    }

    void codeEnds()
    {
        PlatformUnderTest platform({"--code-lifetime", "600"});
        QVERIFY(platform.as().get("/admin/mobile/13800000001").ok());
        const QByteArray path = "/auth/mobile/token/sms?mobile=SMS@13800000001&grant_type=mobile&code="
            + platform.sentCode("13800000001");
        for (const QString offset : {"601", "590"}) {
            platform.restart({"--clock-offset", offset});
            QCOMPARE(platform.asClient().post(path).ok(), offset == "590");
        }
    }

private:
    static QString userOf(const Answer& signedIn)
    {
        return signedIn.json().value("user_info").toObject().value("username").toString();
    }

    /// A code that was asked for just now.
    QByteArray sentTo(const QByteArray& address) const
    {
        m_platform.as().get((address.contains('@') ? "/admin/mail/" : "/admin/mobile/") + address);
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
