// SPDX-License-Identifier: MIT
#include "AccountText.h"

#include "ui/account/RememberedAccounts.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <memory>

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

AccountLists twoAccounts()
{
    return {{"a", QString::fromUtf8("李")}, {"QQ==", ""}, {"true", QString()}};
}

/// What a reader starts with, to see whether it was touched.
AccountLists before()
{
    return {{"before"}, {"p"}, {"f"}};
}

QList<QStringList> lists(const AccountLists& accounts)
{
    return {accounts.userNames, accounts.passwords, accounts.rememberFlags};
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
        AccountLists read = before();
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
            AccountLists read = before();
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
        QTest::newRow("more than anybody has")
            << header + hex("000003e9") + QByteArray(1001 * 4, '\0') + lists23 << nothing;
        QTest::newRow("longer than anybody types")
            << header + hex("00000001 00100002") + QByteArray(0x100002, 'a') + lists23 << nothing;
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
        AccountLists read = before();
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
            AccountLists read = before();
            readAccountFile(read);
            QCOMPARE(lists(read), lists(before()));
        }
    }

    void isReplacedAndForItsOwnerOnly()
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
        QCOMPARE(::link("target", "second name"), 0);
        writeAccountFile({});
        QCOMPARE(QFileInfo("second name").size(), wholeFile.size()); // not written in place
        QCOMPARE(
            QDir().entryList(QDir::Files | QDir::Hidden), QStringList({fileName, "second name", "target"}));
    }

    void putsInFront_data()
    {
        QTest::addColumn<QString>("before"); // names, passwords and flags
        QTest::addColumn<QString>("after");
        const auto row = [](const char* name, const char* before, const char* after) {
            QTest::newRow(name) << before << after;
        };
        row("the first ever", "||", "N|new|true");
        row("a sixth drops the oldest", "a b c d e|0 1 2 3 4|p q r s t",
            "N a b c d|new 0 1 2 3|true p q r s");
        row("a known one", "a b N d|0 1 2 3|p q r s", "N a b d|new 0 1 3|true p q s");
        row("letter case", "n|0|p", "N n|new 0|true p");
        row("lists cut short", "a b N|0|", "N a b|new 0|true");
        row("more than we keep", "a b c d e f|0|", "N a b c d e|new 0|true");
    }

    void putsInFront()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        remember(before);
        RememberedAccounts accounts;
        accounts.load();
        accounts.putInFront("N", "new", "true");
        accounts.save();
        QCOMPARE(remembered(), after);
        accounts.putInFront("", "new", "true"); // nobody
        accounts.save();
        QCOMPARE(remembered(), after);
    }

private:
    std::unique_ptr<QTemporaryDir> scratch;
};

QTEST_GUILESS_MAIN(TestAccountFile)
#include "tst_accountfile.moc"
