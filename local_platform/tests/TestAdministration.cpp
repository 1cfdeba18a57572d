// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <QDir>
#include <QJsonArray>

namespace {

struct Outcome
{
    int exitCode;
    QByteArray output;
    QByteArray errors;
};

} // namespace

/// The administrator's tool beside the running platform.
class TestAdministration : public QObject
{
    Q_OBJECT

private slots:
    void accountsComeAndGo()
    {
        QCOMPARE(admin({"user", "add", "dora", "--phone", "13800000009"}, "demo-alice-1\n").exitCode, 0);
        QVERIFY(listed("user").contains("dora"));
        const Client dora = signedIn("alice");
        QVERIFY(mayIn(dora));

        QCOMPARE(admin({"user", "disable", "dora"}).exitCode, 0);
        QVERIFY(!mayIn(dora));
        const Answer refused = m_platform.signIn("dora", PlatformUnderTest::wirePassword("alice"));
        QCOMPARE(refused.status, 403);
        QCOMPARE(refused.msg(), QByteArray("This account is disabled"));
        QCOMPARE(admin({"user", "enable", "13800000009"}).exitCode, 0);
        QVERIFY(mayIn(signedIn("alice")));

        const Client before = signedIn("alice");
        QCOMPARE(admin({"user", "reset-password", "dora"}, "demo-bob-1\n").exitCode, 0);
        QVERIFY(!mayIn(before));
        QVERIFY(!m_platform.signIn("dora", PlatformUnderTest::wirePassword("alice")).ok());
        QVERIFY(mayIn(signedIn("bob")));
    }

    void sessionsEnd()
    {
        const Client one = m_platform.signedIn("carol");
        const Client other = m_platform.signedIn("carol");
        QCOMPARE(admin({"session", "end", "--user", "carol"}).exitCode, 0);
        QVERIFY(!mayIn(one) && !mayIn(other));

        const Client last = m_platform.signedIn("carol");
        QByteArray id;
        for (const auto& session : list("session"))
            if (session.toObject().value("username") == "carol")
                id = session.toObject().value("id").toString().toLatin1();
        QVERIFY(mayIn(m_platform.signedIn("bob")));
        QCOMPARE(admin({"session", "end", QString(id)}).exitCode, 0);
        QVERIFY(!mayIn(last));
    }

    void whatIsDestroyedIsAskedForFirst()
    {
        const Client alice = m_platform.signedIn("alice");
        const Client bob = m_platform.signedIn("bob");
        const QByteArray project = addProject(alice, "Bridge");
        const QByteArray file = uploadSharedFile(alice, project, "x", "shared");
        QVERIFY(alice.upload("cloudProjectBackup/upload", {{"projectId", project}}, "a", "backup").ok());
        const FormFields share = {
            {"projectId", project}, {"logicalIds", file}, {"durationHours", "1"}, {"userNames", "bob"}};
        QVERIFY(alice.postForm("cloudProjectShare/toUSer", share).ok());
        const QByteArray path = "cloudProjectShare/download?logicalId=" + file;
        QCOMPARE(bob.get(path).body, QByteArray("shared"));
        const QString shareId = QString::number(list("share").last().toObject().value("id").toInt());

        QCOMPARE(admin({"share", "revoke", shareId}).exitCode, 1);
        QCOMPARE(bob.get(path).body, QByteArray("shared"));
        QCOMPARE(admin({"share", "revoke", shareId, "--yes"}).exitCode, 0);
        QCOMPARE(bob.get(path).status, 404);
        QCOMPARE(alice.get(path).body, QByteArray("shared"));

        QVERIFY(alice.postForm("cloudProjectShare/toAnonymous", share).ok());
        QCOMPARE(admin({"project", "delete", QString(project)}).exitCode, 1);
        QVERIFY(listed("project").contains("Bridge"));
        QCOMPARE(admin({"project", "delete", QString(project), "--yes"}).exitCode, 0);
        QVERIFY(!listed("project").contains("Bridge"));
        QCOMPARE(alice.get(path).status, 404);
        QCOMPARE(list("share").size(), 0);
        QCOMPARE(m_platform.storedFiles(), QStringList());
        QCOMPARE(QDir(m_platform.data() + "/trash").entryList(QDir::Files).size(), 2);

        QProcess verify;
        verify.start(PlatformUnderTest::program(), {"verify", "--data", m_platform.data()});
        QVERIFY(verify.waitForFinished());
        QVERIFY2(verify.exitCode() == 0, verify.readAll());
        QVERIFY(admin({"stats"}).output.contains("files in the trash     2\n"));
    }

    void saysWhatItCannotDo_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("reason");
        QTest::newRow("no such account") << QStringList{"user", "disable", "nobody"} << QByteArray("nobody");
        QTest::newRow("a name that is taken")
            << QStringList{"user", "add", "Alice"} << QByteArray("The user name is taken");
        QTest::newRow("a name that deceives")
            << QStringList{"user", "add", QString::fromUtf8("al\u200bice")} << QByteArray("invisible");
        QTest::newRow("no such session")
            << QStringList{"session", "end", "0"} << QByteArray("no such session");
        QTest::newRow("whose session") << QStringList{"session", "end"} << QByteArray("--user");
        QTest::newRow("no such share") << QStringList{"share", "revoke", "999", "--yes"} << QByteArray("999");
        QTest::newRow("no such project")
            << QStringList{"project", "delete", "999", "--yes"} << QByteArray("999");
        QTest::newRow("no command") << QStringList{"user"} << QByteArray("ubcommand");
        QTest::newRow("no data folder")
            << QStringList{"stats", "--data", "/nowhere"} << QByteArray("/nowhere");
    }

    void saysWhatItCannotDo()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, reason);
        const Outcome outcome = admin(arguments, "demo-alice-1\n");
        QVERIFY(outcome.exitCode != 0);
        QVERIFY2(outcome.errors.contains(reason), outcome.errors);
        QVERIFY(mayIn(m_platform.signedIn("alice")));
    }

private:
    Outcome admin(QStringList arguments, const QByteArray& input = {}) const
    {
        QProcess tool;
        if (!arguments.contains("--data"))
            arguments += {"--data", m_platform.data()};
        tool.start(TAV_PLATFORM_ADMIN, arguments);
        tool.write(input);
        tool.closeWriteChannel();
        if (!tool.waitForFinished())
            return {-1, {}, "did not end"};
        return {tool.exitCode(), tool.readAllStandardOutput(), tool.readAllStandardError()};
    }

    QJsonArray list(const QString& what) const
    {
        return QJsonDocument::fromJson(admin({what, "list", "--json"}).output).array();
    }

    QByteArray listed(const QString& what) const { return admin({what, "list"}).output; }

    /// Dora, with the password of this demo account.
    Client signedIn(const QByteArray& password) const
    {
        const Answer answer = m_platform.signIn("dora", PlatformUnderTest::wirePassword(password));
        return m_platform.as("Bearer " + answer.json().value("access_token").toString().toLatin1());
    }

    static bool mayIn(const Client& client) { return client.get("cloudAddressBook/list").ok(); }

    PlatformUnderTest m_platform;
};

QTEST_GUILESS_MAIN(TestAdministration)
#include "TestAdministration.moc"
