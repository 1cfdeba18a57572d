// SPDX-License-Identifier: MIT
#include "AccountText.h"

#include "ui/account/RememberedAccounts.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <memory>

using namespace tav;

namespace {

const QString fileName = "AccountManage.bin";
const QByteArray header = QByteArray::fromHex("abbcc0dd 00000244");

/// Two names, "a" and "李", two passwords, "QQ==" and "", and a flag that was never set, byte by byte.
const QByteArray firstList = QByteArray::fromHex("00000002 00000002 0061 00000002 674e");
const QByteArray secondList = QByteArray::fromHex("00000002 00000008 0051 0051 003d 003d 00000000");
const QByteArray thirdList = QByteArray::fromHex("00000001 ffffffff");
const QByteArray wholeFile = header + firstList + secondList + thirdList;

AccountLists twoAccounts()
{
    return {{"a", QString::fromUtf8("李")}, {"QQ==", ""}, {QString()}};
}

/// The first \a count lists of that, and the rest empty.
QList<QStringList> firstLists(int count)
{
    const AccountLists all = twoAccounts();
    QList<QStringList> lists{all.userNames, all.passwords, all.rememberFlags};
    for (int i = count; i < lists.size(); ++i)
        lists[i].clear();
    return lists;
}

const QList<QStringList> untouched{{"before"}, {"p"}, {"f"}};

QByteArray contents()
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The untouched lists after reading.
QList<QStringList> read()
{
    AccountLists lists{untouched[0], untouched[1], untouched[2]};
    readAccountFile(lists);
    return {lists.userNames, lists.passwords, lists.rememberFlags};
}

QList<QStringList> readFrom(const QByteArray& bytes)
{
    QFile file(fileName);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
    file.close();
    return read();
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

    void writesTheDocumentedBytes()
    {
        writeAccountFile(twoAccounts());
        QCOMPARE(contents(), wholeFile);
        AccountLists lists;
        readAccountFile(lists);
        writeAccountFile(lists);
        QCOMPARE(contents(), wholeFile); // null and empty texts are told apart
    }

    void aCutFileKeepsTheListsBeforeTheCut()
    {
        const int firstEnd = header.size() + firstList.size();
        const int secondEnd = firstEnd + secondList.size();
        for (int size = 0; size <= wholeFile.size(); ++size) {
            const int whole = (size >= firstEnd) + (size >= secondEnd) + (size == wholeFile.size());
            const auto expected = size < header.size() ? untouched : firstLists(whole);
            QVERIFY2(readFrom(wholeFile.left(size)) == expected, qPrintable(QString::number(size)));
        }
    }

    void readsOnlyWhatIsPlausible()
    {
        const std::tuple<QByteArray, QByteArray, QList<QStringList>> rows[]{
            {"abbcc0de 00000244", firstList, untouched}, // another magic
            {"abbcc0dd 00000245", firstList, untouched}, // another version
            {"abbcc0dd 00000244 7fffffff", "", firstLists(0)}, // a count beyond the file
            {"abbcc0dd 00000244 00000001 7ffffffe", "", firstLists(0)}, // a length beyond the file
            {"abbcc0dd 00000244 000003e9", QByteArray(1001 * 4, '\0'), firstLists(0)}, // too many texts
            {"abbcc0dd 00000244 00000001 00100002", QByteArray(0x100002, 'a'), firstLists(0)}, // too long
            {"abbcc0dd 00000244 00000001 00000003 006161", "", firstLists(0)}, // an odd length
        };
        for (const auto& [begin, rest, expected] : rows)
            QVERIFY2(readFrom(QByteArray::fromHex(begin) + rest + secondList + thirdList) == expected, begin);
        QCOMPARE(readFrom(wholeFile + "more"), firstLists(3));
    }

    void onlyARegularFileIsRead()
    {
        QCOMPARE(read(), untouched);
        QCOMPARE(::mkfifo(qPrintable(fileName), 0600), 0);
        QCOMPARE(read(), untouched); // opening it would wait for its other end
    }

    void isReplacedAndReadableByItsOwnerOnly()
    {
        const QFile::Permissions others(0x0077);
        const mode_t mask = ::umask(0);
        for (const char* state : {"new", "there for all to read", "a link"}) {
            writeAccountFile(twoAccounts());
            QVERIFY2(!(QFile::permissions(fileName) & others), state);
            QVERIFY(QFile::setPermissions(fileName, QFile::permissions(fileName) | others));
            if (QFile::exists("target"))
                QVERIFY(QFile::remove(fileName) && QFile::link("target", fileName));
            else
                QVERIFY(QFile::copy(fileName, "target"));
        }
        ::umask(mask);
        QVERIFY(QFileInfo(fileName).isSymLink());
        QCOMPARE(::link("target", "second name"), 0);
        writeAccountFile({});
        QCOMPARE(QFileInfo("second name").size(), wholeFile.size()); // not written in place
        QCOMPARE(
            QDir().entryList(QDir::Files | QDir::Hidden), QStringList({fileName, "second name", "target"}));
    }

    void putsAnAccountInFront()
    {
        // Names, passwords and flags, before and after.
        const std::pair<QString, QString> rows[]{
            {"||", "N|new|true"}, {"a b c d e|0 1 2 3 4|p q r s t", "N a b c d|new 0 1 2 3|true p q r s"},
            {"a b N d|0 1 2 3|p q r s", "N a b d|new 0 1 3|true p q s"},
            {"n|0|p", "N n|new 0|true p"}, // another account
            {"a b N|0|", "N a b|new 0|true"}, // lists cut
            {"a b c d e f|0|", "N a b c d e|new 0|true"}, // more than are kept
        };
        for (const auto& [before, after] : rows) {
            remember(before);
            RememberedAccounts accounts;
            accounts.load();
            accounts.putInFront("N", "new", "true");
            accounts.putInFront("", "new", "true"); // nobody
            accounts.save();
            QCOMPARE(remembered(), after);
        }
    }

private:
    std::unique_ptr<QTemporaryDir> scratch;
};

QTEST_GUILESS_MAIN(TestAccountFile)
#include "tst_accountfile.moc"
