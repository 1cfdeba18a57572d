// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <QDirIterator>
#include <atomic>
#include <functional>
#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>
#include <sys/stat.h>
#include <thread>

Q_DECLARE_METATYPE(std::function<void(QString)>)

namespace {

const QByteArray day = "86400";
const QString markName = "/tav-local-platform.json";

struct Run
{
    int exitCode;
    QByteArray said;
};

Run run(const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(PlatformUnderTest::program(), arguments);
    if (!process.waitForFinished(60000))
        qFatal("The command goes on and on");
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAll()};
}

/// All names below the folder with what is in the files.
QMap<QString, QByteArray> contentOf(const QString& folder)
{
    QMap<QString, QByteArray> content;
    QDirIterator entries(
        folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        QFile file(entries.next());
        const bool plain = entries.fileInfo().isFile() && file.open(QIODevice::ReadOnly);
        content[entries.filePath().mid(folder.size())] = plain ? file.readAll() : "no file";
    }
    return content;
}

void write(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("Cannot write %s", qPrintable(path));
}

void runSql(const QString& folder, const std::vector<std::string>& statements)
{
    soci::session sql(soci::sqlite3, "db=" + folder.toStdString() + "/platform.sqlite");
    for (const std::string& statement : statements)
        sql << statement;
}

std::vector<std::string> schemaOf(const QString& folder)
{
    soci::session sql(soci::sqlite3, "db=" + folder.toStdString() + "/platform.sqlite");
    std::string text;
    soci::statement statement(sql);
    statement.exchange(soci::into(text));
    statement.alloc();
    statement.prepare("select coalesce(sql, name) from sqlite_master order by name");
    statement.define_and_bind();
    statement.execute();
    std::vector<std::string> schema;
    while (statement.fetch())
        schema.push_back(text);
    return schema;
}

QByteArray backUp(const Client& client, const QByteArray& project, const QByteArray& content)
{
    return client.upload("cloudProjectBackup/upload", {{"projectId", project}}, "x.dat", content).msg();
}

QByteArray downloaded(const Client& client, const QByteArray& project)
{
    return client.get("cloudProjectBackup/downloadProject?projectId=" + project).body;
}

/// Makes a database of an earlier version out of one of this.
std::vector<std::string> backTo(int version)
{
    std::vector<std::string> statements = {"alter table users drop column disabled"};
    if (version == 5)
        statements.insert(statements.end(),
            {"insert into codes values ('13800000001', 'sign-in', '', '123456', 9999999999, 5, 5, "
             "9999999999, 1)",
                "update about set value = '5' where name = 'schema'"});
    if (version < 5)
        statements.insert(statements.end(),
            {"drop table codes",
                "create table codes (address text not null, purpose text not null, code text not null,"
                " expires_at bigint not null, tries_left bigint not null, window_start bigint not null,"
                " sent_in_window bigint not null, primary key (address, purpose))",
                "insert into codes values ('13800000001', 'sign-in', '123456', 9999999999, 5, 9999999999, "
                "1)"});
    if (version == 4)
        statements.emplace_back("update about set value = '4' where name = 'schema'");
    if (version >= 4)
        return statements;
    for (const char* index : {"users_name_key", "users_skeleton", "backups_stored_name",
             "shared_files_stored_name", "trash_since", "adaptation_types_source", "user_groups_owner"})
        statements.push_back(std::string("drop index ") + index);
    for (const char* column : {"users drop column name_key", "users drop column skeleton"})
        statements.push_back(std::string("alter table ") + column);
    if (version == 3)
        statements.emplace_back("update about set value = '3' where name = 'schema'");
    else
        statements.insert(statements.end(), {"drop table about", "drop table trash"});
    if (version < 2)
        statements.emplace_back("alter table shared_files drop column sha256");
    if (version < 1)
        statements.emplace_back("alter table backups drop column sha256");
    return statements;
}

} // namespace

class TestDataFolder : public QObject
{
    Q_OBJECT

private slots:
    void touchesNothingThatIsNotItsOwn_data()
    {
        QTest::addColumn<std::function<void(QString)>>("change");
        QTest::addColumn<QByteArray>("reason");
        const auto row = [](const char* name, const std::function<void(QString)>& change,
                             const QByteArray& reason) { QTest::newRow(name) << change << reason; };
        row(
            "files of the user's own",
            [](const QString& folder) {
                QDir(folder).removeRecursively();
                for (const QString name : {"files", "incoming", "scratch"})
                    write(folder + '/' + name + "/thesis.txt", "years of work");
            },
            "is not empty and has no mark");
        row(
            "another program's database",
            [](const QString& folder) {
                QDir(folder).removeRecursively();
                write(folder + "/files/thesis.txt", "years of work");
                runSql(folder, {"pragma journal_mode=wal", "create table users (id integer)"});
            },
            "that is not this platform's");
        row(
            "no database", [](const QString& folder) { QFile::remove(folder + "/platform.sqlite"); },
            "whose database, platform.sqlite, is missing");
        row(
            "neither mark nor database",
            [](const QString& folder) {
                QFile::remove(folder + "/platform.sqlite");
                QFile::remove(folder + markName);
            },
            "is not empty and has no mark");
        row(
            "another platform's database",
            [](const QString& folder) { runSql(folder, {"update about set value = 'x' where name = 'id'"}); },
            "the id in it differs");
        row(
            "a later schema",
            [](const QString& folder) {
                runSql(folder, {"update about set value = '1000' where name = 'schema'"});
            },
            "has a database of a later version");
        row(
            "a later format",
            [](const QString& folder) {
                write(folder + markName, R"({"name": "tav-local-platform", "format": 2, "id": "x"})");
            },
            "is a data folder of a later version");
        row(
            "a mark that is none", [](const QString& folder) { write(folder + markName, "{"); },
            "not this platform's or is damaged");
        row(
            "a database that is none",
            [](const QString& folder) { write(folder + "/platform.sqlite", QByteArray(9000, 'x')); },
            "cannot be read");
        row(
            "a damaged database",
            [](const QString& folder) {
                QFile database(folder + "/platform.sqlite");
                QVERIFY(database.open(QIODevice::ReadWrite) && database.seek(4096 * 5));
                QCOMPARE(database.write(QByteArray(4096 * 20, 'x')), 4096 * 20);
            },
            "damaged database");
        row(
            "a link to a folder elsewhere",
            [](const QString& folder) {
                QDir().rename(folder + "/files", folder + "/../elsewhere");
                QVERIFY(QFile::link("../elsewhere", folder + "/files"));
            },
            "is a symbolic link");
    }

    void touchesNothingThatIsNotItsOwn()
    {
        QFETCH(std::function<void(QString)>, change);
        QFETCH(QByteArray, reason);
        const QTemporaryDir above;
        const QString folder = above.path() + "/data";
        copyTo(folder);
        change(folder);
        const auto before = contentOf(above.path());
        const std::pair<QStringList, QByteArray> commands[]{
            {{"--listen", "127.0.0.1:0"}, reason},
            {{"restore", m_platform.data()}, "is not empty"},
        };
        for (const auto& [command, told] : commands) {
            const Run refused = run(command + QStringList{"--data", folder});
            QCOMPARE(refused.exitCode, 1);
            QVERIFY2(refused.said.contains("Nothing in it was touched"), refused.said);
            QVERIFY2(refused.said.contains(told), refused.said);
            QCOMPARE(contentOf(above.path()), before);
        }
    }

    void earlierVersionsAreTakenOver_data()
    {
        QTest::addColumn<int>("version");
        QTest::newRow("1") << 0;
        QTest::newRow("1, on its way to 2") << 1;
        QTest::newRow("2") << 2;
        QTest::newRow("3") << 3;
        QTest::newRow("4") << 4;
        QTest::newRow("5") << 5;
    }

    void earlierVersionsAreTakenOver()
    {
        QFETCH(int, version);
        PlatformUnderTest platform;
        const QByteArray project = addProject(platform.signedIn("alice"));
        QCOMPARE(backUp(platform.signedIn("alice"), project, "my survey"), QByteArray("success"));
        QCOMPARE(platform.stop(), 0);
        const auto schema = schemaOf(platform.data());
        runSql(platform.data(), backTo(version));
        QVERIFY(version >= 3 || QFile::remove(platform.data() + markName));

        platform.restart();
        QCOMPARE(downloaded(platform.signedIn("alice"), project), QByteArray("my survey"));
        QVERIFY(platform.signIn("ALICE", PlatformUnderTest::wirePassword("alice")).ok());
        const QByteArray path = "/auth/mobile/token/sms?mobile=SMS@13800000001&grant_type=mobile&code=123456";
        QVERIFY2(platform.asClient().post(path).ok(), "a code that was sent before holds");
        QCOMPARE(platform.stop(), 0);
        QVERIFY(schemaOf(platform.data()) == schema);
        QCOMPARE(
            run({"verify", "--data", platform.data()}).said, QByteArray("1 files checked, 0 findings\n"));
        platform.restart();
    }

    void aStartWritesNothing()
    {
        // So that it succeeds on a full disk.
        PlatformUnderTest platform;
        QCOMPARE(platform.stop(), 0);
        platform.restart();
        platform.kill();
        const auto before = contentOf(platform.data());
        platform.restart();
        platform.kill();
        auto after = contentOf(platform.data());
        after["/platform.sqlite-shm"] = before["/platform.sqlite-shm"]; // of locks
        QCOMPARE(after, before);
    }

    void othersCannotReadWhatItKeeps()
    {
        const ::mode_t before = ::umask(0);
        PlatformUnderTest platform;
        platform.as().get("/admin/mobile/13800000001");
        QCOMPARE(backUp(platform.signedIn("alice"), addProject(platform.signedIn("alice")), "x"),
            QByteArray("success"));
        ::umask(before);
        ::chmod(platform.data().toLocal8Bit() + "/files", 0755);
        ::chmod(platform.data().toLocal8Bit() + "/platform.sqlite", 0644);
        platform.restart();
        const auto isOpen = [](const QString& path) {
            return (QFileInfo(path).permissions() & (QFile::ReadGroup | QFile::ReadOther)) != 0;
        };
        QVERIFY(!isOpen(platform.data()));
        for (const QString& name : contentOf(platform.data()).keys())
            QVERIFY2(!isOpen(platform.data() + name), qPrintable(name));
    }

    void whatIsUnknownStaysAndIsTold()
    {
        PlatformUnderTest platform;
        const Client alice = platform.signedIn("alice");
        for (const QByteArray content : {"changed", "missing", "kept"})
            QCOMPARE(backUp(alice, addProject(alice), content), QByteArray("success"));
        const QString data = platform.data();
        const QString token = QString(43, 'a');
        for (const QString name : {"/notes.txt", "/files/notes.txt", "/incoming/notes.txt",
                 "/scratch/notes.txt", "/trash/notes.txt"})
            write(data + name, "mine");
        write(data + "/files/" + token, "mine"); // named as the platform would
        platform.restart();
        platform.kill();
        for (const QString& name : QDir(data + "/files").entryList(QDir::Files)) {
            const QByteArray content = contentOf(data)["/files/" + name];
            if (content == "changed")
                write(data + "/files/" + name, "chANged");
            else if (content == "missing")
                QVERIFY(QFile::remove(data + "/files/" + name));
        }
        platform.restart();
        const auto before = contentOf(data + "/files");
        const Run verified = run({"verify", "--data", data});
        QCOMPARE(verified.exitCode, 2);
        for (const QByteArray told : {"changed: files/", "missing: files/", "surplus: notes.txt",
                 "surplus: files/notes.txt", "surplus: incoming/notes.txt", "surplus: scratch/notes.txt",
                 "surplus: trash/notes.txt", "surplus: files/aaaaaaa", "3 files checked, 8 findings"})
            QVERIFY2(verified.said.contains(told), verified.said);
        QCOMPARE(contentOf(data + "/files"), before);
    }

    void whatIsReplacedStaysInTheTrashForItsTime()
    {
        PlatformUnderTest platform({"--trash-age", "10"});
        const QByteArray project = addProject(platform.signedIn("alice"));
        for (const QByteArray content : {"first", "second"})
            QCOMPARE(backUp(platform.signedIn("alice"), project, content), QByteArray("success"));
        const QDir trash(platform.data() + "/trash");
        const auto inTrash = [&] { return contentOf(trash.path()).values(); };
        QCOMPARE(inTrash(), QList<QByteArray>{"first"});

        // A kill between the commit and the moves that follow it.
        platform.kill();
        const QString replaced = trash.entryList(QDir::Files).value(0);
        QVERIFY(QFile::rename(
            trash.filePath(replaced), platform.data() + "/files/" + replaced.mid(replaced.indexOf('-') + 1)));
        const QString current = QDir(platform.data() + "/files").entryList({"*"}, QDir::Files).value(0);
        for (const QString& name : QDir(platform.data() + "/files").entryList(QDir::Files))
            QVERIFY(QFile::rename(platform.data() + "/files/" + name, platform.data() + "/incoming/" + name));
        write(platform.data() + "/incoming/" + QString(43, 'b'), "cut short");
        platform.restart({"--trash-age", "10", "--clock-offset", QByteArray::number(9 * day.toInt())});
        QCOMPARE(downloaded(platform.signedIn("alice"), project), QByteArray("second"));
        QVERIFY(inTrash().contains("first") && inTrash().contains("cut short"));
        QCOMPARE(contentOf(platform.data() + "/incoming").size(), 0);
        QCOMPARE(contentOf(platform.data() + "/files").values(), QList<QByteArray>{"second"});

        platform.restart({"--trash-age", "10", "--clock-offset", QByteArray::number(11 * day.toInt())});
        QCOMPARE(inTrash(), QList<QByteArray>{"cut short"});
        platform.restart({"--trash-age", "10", "--clock-offset", QByteArray::number(20 * day.toInt())});
        QCOMPARE(inTrash(), QList<QByteArray>());
        QCOMPARE(downloaded(platform.signedIn("alice"), project), QByteArray("second"));
    }

    void aBackupOfARunningPlatformIsOfOneMoment()
    {
        PlatformUnderTest platform;
        const Client alice = platform.signedIn("alice");
        const QByteArray project = addProject(alice);
        const QByteArray other = addProject(alice);
        std::atomic<bool> stop{false};
        std::atomic<int> written{0};
        std::thread writing([&] {
            // The second is never ahead of the first.
            for (int i = 1; !stop; ++i, ++written)
                for (const QByteArray& id : {project, other})
                    if (backUp(alice, id, QByteArray::number(i)) != "success")
                        return;
        });
        const QTemporaryDir above;
        const QString backup = above.path() + "/backup";
        QTRY_VERIFY(written > 3);
        for (int i = 0; i < 5; ++i) {
            const Run done = run({"backup", backup + QString::number(i), "--data", platform.data()});
            QVERIFY2(done.exitCode == 0, done.said);
        }
        const int before = written;
        QTRY_VERIFY(written > before + 3);
        stop = true;
        writing.join();
        platform.kill();

        for (int i = 0; i < 5; ++i) {
            const QString restored = above.path() + "/restored" + QString::number(i);
            QVERIFY(run({"restore", backup + QString::number(i), "--data", restored}).exitCode == 0);
            QCOMPARE(run({"verify", "--data", restored}).exitCode, 0);
            platform.restart({"--data", restored});
            const Client again = platform.signedIn("alice");
            const int first = downloaded(again, project).toInt();
            const int second = downloaded(again, other).toInt();
            QVERIFY(second > 0 && (first == second || first == second + 1));
        }
        const Run refused = run({"backup", backup + '0', "--data", platform.data()});
        QCOMPARE(refused.exitCode, 1);
        QVERIFY2(refused.said.contains("is not empty"), refused.said);
    }

    void aDamagedBackupIsTold()
    {
        const QTemporaryDir above;
        const QString backup = above.path() + "/backup";
        QCOMPARE(run({"backup", backup, "--data", m_platform.data()}).exitCode, 0);
        const QString file = QDir(backup + "/files").entryList(QDir::Files).value(0);
        QVERIFY(QFile::remove(backup + "/files/" + file));
        QCOMPARE(run({"verify", "--data", backup}).exitCode, 2);
        const Run restored = run({"restore", backup, "--data", above.path() + "/restored"});
        QCOMPARE(restored.exitCode, 2);
        QVERIFY2(restored.said.contains("missing: files/" + file.toUtf8()), restored.said);
        QVERIFY(QFile::remove(backup + markName));
        QVERIFY2(run({"restore", backup, "--data", above.path() + "/again"}).exitCode == 1,
            "a backup that was not finished is none");
    }

    void initTestCase()
    {
        const Client alice = m_platform.signedIn("alice");
        QCOMPARE(backUp(alice, addProject(alice), "a drawing"), QByteArray("success"));
        QCOMPARE(m_platform.stop(), 0);
    }

private:
    void copyTo(const QString& folder) const
    {
        const auto content = contentOf(m_platform.data());
        for (auto entry = content.begin(); entry != content.end(); ++entry)
            if (entry.value() == "no file")
                QDir().mkpath(folder + entry.key());
            else
                write(folder + entry.key(), entry.value());
    }

    PlatformUnderTest m_platform;
};

QTEST_GUILESS_MAIN(TestDataFolder)
#include "TestDataFolder.moc"
