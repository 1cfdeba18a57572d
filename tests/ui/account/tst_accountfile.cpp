// SPDX-License-Identifier: MIT
#include "ui/account/AccountFile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/resource.h>
#include <sys/stat.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace {

const QString fileName = "AccountManage.bin";
const QByteArray header = QByteArray::fromHex("abbcc0dd 00000244");

/// Two accounts, byte by byte: "a" and "李" with the passwords "QQ==" and "", the flags "true" and none.
const QByteArray firstList = QByteArray::fromHex("00000002 00000002 0061 00000002 674e");
const QByteArray secondList = QByteArray::fromHex("00000002 00000008 0051 0051 003d 003d 00000000");
const QByteArray thirdList = QByteArray::fromHex("00000002 00000008 0074 0072 0075 0065 ffffffff");
const QByteArray wholeFile = header + firstList + secondList + thirdList;

QByteArray contents()
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void store(const QByteArray& bytes)
{
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

RememberedAccounts twoAccounts()
{
    return {{"a", QString::fromUtf8("李")}, {"QQ==", ""}, {"true", QString()}};
}

/// What a reader starts with, to see whether it was touched.
RememberedAccounts before()
{
    return {{"before"}, {"p"}, {"f"}};
}

QList<QStringList> lists(const RememberedAccounts& accounts)
{
    return {accounts.userNames, accounts.passwords, accounts.rememberFlags};
}

/// Lowers a limit of the process for a while.
class Limit
{
public:
    Limit(__rlimit_resource limited, rlim_t bytes)
        : resource(limited)
    {
        ::getrlimit(resource, &old);
        const rlimit low{bytes, old.rlim_max};
        ::setrlimit(resource, &low);
    }
    ~Limit() { ::setrlimit(resource, &old); }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;

private:
    __rlimit_resource resource;
    rlimit old{};
};

[[maybe_unused]] rlim_t addressSpaceInUse()
{
    QFile file("/proc/self/statm");
    const bool open = file.open(QIODevice::ReadOnly);
    Q_ASSERT(open);
    Q_UNUSED(open)
    return file.readAll().split(' ').first().toULongLong() * 4096;
}

} // namespace

class TestAccountFile : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        scratch = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(scratch->path()));
    }

    void writesTheseBytes_data()
    {
        QTest::addColumn<QList<QStringList>>("written");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("two accounts") << lists(twoAccounts()) << wholeFile;
        QTest::newRow("none") << QList<QStringList>{{}, {}, {}} << header + QByteArray(12, '\0');
        QTest::newRow("of unequal length") << QList<QStringList>{
            {}, {"x"}, {}} << header + QByteArray::fromHex("00000000 00000001 00000002 0078 00000000");
        QTest::newRow("beyond the basic plane") << QList<QStringList>{{QString::fromUtf8("😀")}, {},
            {}} << header + QByteArray::fromHex("00000001 00000004 d83dde00 00000000 00000000");
    }

    void writesTheseBytes()
    {
        QFETCH(QList<QStringList>, written);
        QFETCH(QByteArray, bytes);
        writeAccountFile({written[0], written[1], written[2]});
        QCOMPARE(contents(), bytes);
        QFile::remove(fileName);

        store(bytes);
        RememberedAccounts read = before();
        readAccountFile(read);
        QCOMPARE(lists(read), written);
        writeAccountFile(read);
        QCOMPARE(contents(), bytes); // null and empty texts are told apart
    }

    void aCutFileKeepsTheListsBeforeTheCut()
    {
        const int headerEnd = header.size();
        const int firstEnd = headerEnd + firstList.size();
        const int secondEnd = firstEnd + secondList.size();
        for (int size = 0; size < wholeFile.size(); ++size) {
            store(wholeFile.left(size));
            QList<QStringList> expected = lists(size < headerEnd ? before() : twoAccounts());
            if (size >= headerEnd) {
                expected[2].clear();
                if (size < secondEnd)
                    expected[1].clear();
                if (size < firstEnd)
                    expected[0].clear();
            }
            RememberedAccounts read = before();
            readAccountFile(read);
            QVERIFY2(lists(read) == expected, qPrintable(QString::number(size)));
        }
    }

    void readsWhatIsThere_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QList<QStringList>>("expected");
        const QList<QStringList> untouched = lists(before());
        const QList<QStringList> nothing{{}, {}, {}};
        const auto hex = [](const char* text) { return QByteArray::fromHex(text); };
        const QByteArray lists23 = secondList + thirdList;
        QTest::newRow("another magic") << hex("abbcc0de 00000244") + firstList + lists23 << untouched;
        QTest::newRow("another version") << hex("abbcc0dd 00000245") + firstList + lists23 << untouched;
        QTest::newRow("count beyond the file") << header + hex("7fffffff") + lists23 << nothing;
        QTest::newRow("length beyond the file") << header + hex("00000001 7ffffffe") + lists23 << nothing;
        QTest::newRow("odd length") << header + hex("00000001 00000003 006161") + lists23 << nothing;
        QTest::newRow("damage in the second list") << header + firstList + hex("00000001 00000001 61")
                + thirdList << QList<QStringList>{twoAccounts().userNames, {}, {}};
        QTest::newRow("more after the end") << wholeFile + "more" << lists(twoAccounts());
    }

    void readsWhatIsThere()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QList<QStringList>, expected);
        store(bytes);
        RememberedAccounts read = before();
#ifndef __SANITIZE_ADDRESS__ // which reserves more than any limit
        const Limit limit(RLIMIT_AS, addressSpaceInUse() + (64 << 20));
#endif
        readAccountFile(read);
        QCOMPARE(lists(read), expected);
    }

    void whatIsNoFileIsNotRead()
    {
        for (const auto& make : std::initializer_list<std::function<bool()>>{[] { return true; },
                 [] { return QDir().mkdir(fileName); },
                 // opening one waits for its other end
                 [] { return QDir().rmdir(fileName) && ::mkfifo(qPrintable(fileName), 0600) == 0; }}) {
            QVERIFY(make());
            RememberedAccounts read = before();
            readAccountFile(read);
            QCOMPARE(lists(read), lists(before()));
        }
    }

    void isForItsOwnerOnly()
    {
        const mode_t mask = ::umask(0);
        for (const char* state : {"new", "there for all to read", "a link"}) {
            writeAccountFile(twoAccounts());
            struct ::stat status
            {
            };
            QCOMPARE(::stat(qPrintable(fileName), &status), 0);
            QVERIFY2((status.st_mode & 0777) == 0600, state);
            QCOMPARE(::chmod(qPrintable(fileName), 0666), 0);
            if (!QFile::exists("target"))
                QVERIFY(QFile::copy(fileName, "target"));
            else
                QVERIFY(QFile::remove(fileName) && QFile::link("target", fileName));
        }
        ::umask(mask);
        QVERIFY(QFileInfo(fileName).isSymLink());
        QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden), QStringList({fileName, "target"}));
    }

    void whatCannotBeWrittenWholeStaysOld()
    {
        store("old");
        std::signal(SIGXFSZ, SIG_IGN);
        {
            const Limit limit(RLIMIT_FSIZE, 16); // as if the disk were full
            writeAccountFile(twoAccounts());
        }
        std::signal(SIGXFSZ, SIG_DFL);
        QCOMPARE(contents(), QByteArray("old"));
        QCOMPARE(QDir().entryList(QDir::Files | QDir::Hidden), QStringList(fileName));
    }

    void ofTwoWritersOneFileRemains()
    {
        // Of different lengths, so that neither covers the other, and long enough to be met half written.
        const auto accountsOf = [](QChar letter, int length) {
            return RememberedAccounts{{QString(length, letter)}, {QString(letter)}, {"true"}};
        };
        const QList<RememberedAccounts> versions{accountsOf('a', 400000), accountsOf('b', 300000)};
        QByteArrayList whole;
        for (const RememberedAccounts& version : versions) {
            writeAccountFile(version);
            whole.append(contents());
        }
        std::atomic<int> running{versions.size()};
        std::vector<std::thread> writers;
        for (const RememberedAccounts& version : versions)
            writers.emplace_back([&running, version] {
                for (int i = 0; i < 50; ++i)
                    writeAccountFile(version);
                --running;
            });
        bool mixed = false;
        do
            mixed = mixed || !whole.contains(contents());
        while (running > 0);
        for (std::thread& writer : writers)
            writer.join();
        QVERIFY(!mixed && whole.contains(contents()));
    }

private:
    std::unique_ptr<QTemporaryDir> scratch;
};

QTEST_GUILESS_MAIN(TestAccountFile)
#include "tst_accountfile.moc"
