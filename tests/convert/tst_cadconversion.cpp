// SPDX-License-Identifier: MIT
#include "convert/CadConversion.h"
#include "core/Log.h"
#include "net/ReplyEnvelope.h"
#include "net/Runners.h"
#include "support/TestConstants.h"

#include <QApplication>
#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

enum Direction
{
    ToDwg,
    ToDgn
};

Q_DECLARE_METATYPE(Behaviour)
Q_DECLARE_METATYPE(Direction)

namespace {
const QByteArray old = "the old file";
const QString earlier = QStringLiteral("an earlier text");
constexpr int block = 3 << 20;

QByteArray operationOf(Direction direction)
{
    return direction == ToDwg ? "ConDgn2Dwg" : "ConDwg2Dgn";
}

QByteArray requestFor(Direction direction, const QByteArray& drawing)
{
    QByteArray text = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<soap:Envelope xmlns:xsi= "
                      "\"http://www.w3.org/2001/XMLSchema-instance\" xmlns:xsd= "
                      "\"http://www.w3.org/2001/XMLSchema\" xmlns:soap = "
                      "\"http://schemas.xmlsoap.org/soap/envelope/\">\n<soap:Body>\n<OP "
                      "xmlns=\"http://tempuri.org/\">\n<file>DRAWING</file>\n</OP>\n</soap:Body>\n"
                      "</soap:Envelope>";
    return text.replace("OP", operationOf(direction)).replace("DRAWING", drawing.toBase64());
}

QByteArray answerWith(Direction direction, const QByteArray& text)
{
    const QByteArray name = operationOf(direction);
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?><soap:Envelope><soap:Body><" + name
        + "Response xmlns=\"http://tempuri.org/\"><" + name + "Result>" + text + "</" + name + "Result></"
        + name + "Response></soap:Body></soap:Envelope>";
}

QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList logged;

void note(const char* text, int level)
{
    logged += QString::number(level) + ':' + QString::fromLocal8Bit(text);
}

/// A call, and what it came to.
struct Conversion
{
    bool ok = false;
    QString error = earlier;
    QString path; ///< of the result
};

Conversion convert(Direction direction, const QString& in, const QString& out)
{
    Conversion done;
    done.path = direction == ToDwg ? in : out;
    logged.clear();
    setLogSink(note);
    done.ok = direction == ToDwg ? dgn2Dwg(done.path, done.error, out) : dwg2Dgn(in, done.error, out);
    setLogSink(nullptr);
    return done;
}
} // namespace

class TestCadConversion : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir::setCurrent(folder->path()));
        for (const char* name : {"out", "a.dgn.d", "a.dwg.d"})
            QVERIFY(QDir().mkdir(name));
        peer = std::make_unique<ScriptedPeer>();
        setPlatformAddress(peer->address());
    }

    void convertsByteForByte_data()
    {
        QTest::addColumn<int>("size");
        QTest::addColumn<Direction>("direction");
        for (const int size : {0, 1, 2, block, 2 * block + 2})
            for (const auto direction : {ToDwg, ToDgn})
                QTest::addRow("%d bytes, %s", size, operationOf(direction).constData()) << size << direction;
    }

    void convertsByteForByte()
    {
        QFETCH(int, size);
        QFETCH(Direction, direction);
        const QByteArray drawing = pattern(size);
        const QByteArray result = "converted" + drawing.toUpper();
        write("in.dgn", drawing);
        expect(behaviour::answer(answerWith(direction, result.toBase64())));
        const Conversion done = convert(direction, "in.dgn", "out/in.dwg");
        QVERIFY(done.ok && done.error == earlier && logged.isEmpty());
        QVERIFY(read("out/in.dwg") == result);
        QVERIFY(read("in.dgn") == drawing);

        const RecordedRequest request = peer->onlyRequest();
        QVERIFY(request.body == requestFor(direction, drawing));
        QCOMPARE(request.header("Content-Type"), QByteArray("text/xml; charset=utf-8"));
        QCOMPARE(request.header("SOAPAction"), "http://tempuri.org/" + operationOf(direction));
        QVERIFY(request.values("Authorization").isEmpty());
    }

    void writesWhereItIsTold_data()
    {
        QTest::addColumn<Direction>("direction");
        QTest::addColumn<QString>("in");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("written"); // "%" is the absolute path of the folder
        const auto row = [](const char* in, const char* out, const char* written,
                             Direction direction = ToDwg) {
            QTest::addRow("%s to %s", in, out) << direction << in << out << written;
        };
        row("x.dgn", "", "x.dwg");
        row("a.dgn.d/x.dgn.dgn", "", "a.dwg.d/x.dwg.dwg");
        row("X.DGN", "", "X.DGN");
        row("drawing", "", "drawing");
        row("x.v8.dgn", "out/any.dwg", "%/out/x.dwg");
        row("图 1.dgn", "%/out/", "%/out/图 1.dwg");
        row("a.dgn.d/x.dgn", "other.dwg", "%/x.dwg");
        row("x.dwg", "out/y", "out/y", ToDgn);
        row("x.dwg", "x.dwg", "x.dwg", ToDgn);
    }

    void writesWhereItIsTold()
    {
        QFETCH(Direction, direction);
        QFETCH(QString, in);
        QFETCH(QString, out);
        QFETCH(QString, written);
        write(in, "drawing");
        expect(behaviour::answer(answerWith(direction, "bmV3")));
        const Conversion done = convert(direction, in, out.replace('%', folder->path()));
        QVERIFY2(done.ok, qPrintable(done.error));
        QCOMPARE(done.path, written.replace('%', folder->path()));
        QCOMPARE(read(done.path), QByteArray("new"));
        QCOMPARE(filesHere(), done.path == in ? 1 : 2);
    }

    void takesTheRightFileOrNone_data()
    {
        QTest::addColumn<Behaviour>("behave");
        QTest::addColumn<QByteArray>("result"); // null: it fails
        const auto row = [](const char* title, const QByteArray& reply, const QByteArray& result,
                             int status = 200) {
            QTest::newRow(title) << behaviour::answer(reply, status) << result;
        };
        const auto text = [](const QByteArray& base64) { return answerWith(ToDwg, base64); };
        const auto tagged = [](const QByteArray& opening, const QByteArray& closing) {
            return "<r>\n<" + opening + ">QUJD</" + closing + ">\n</r>";
        };
        const QByteArray name = "ConDgn2DwgResult";
        const QByteArray none;
        row("a namespace prefix", tagged("ns:" + name, "ns:" + name), "ABC");
        row("attributes", tagged(name + " xmlns=\"http://tempuri.org/\" a='1'", name), "ABC");
        row("space before the end of a tag", tagged(name + " ", name + " "), "ABC");
        row("line breaks", text("QU\r\nJD\nREVG\r\n"), "ABCDEF");
        row("two paddings", text("QQ=="), "A");
        row("an error status with a result", text("QUJD"), "ABC", 500);
        row("blank result", text(" \r\n "), none);
        row("SOAP fault that quotes the element",
            "<faultstring>no " + name + " for QUJD " + name + "</faultstring>", none, 500);
        row("cut within the end tag", tagged(name, name).chopped(8), none);
        row("padding missing", text("QUI"), none);
        row("one character too many", text("QUJDR"), none);
        row("padding inside", text("QQ==QUJD"), none);
        row("URL alphabet", text("-_-_"), none);
        row("an element in it", text("<file>QUJD</file>"), none);
        QTest::newRow("cut by the connection")
            << behaviour::closeAfter(behaviour::response(text("QUJDREVG")).chopped(90)) << none;
    }

    void takesTheRightFileOrNone()
    {
        QFETCH(Behaviour, behave);
        QFETCH(QByteArray, result);
        write("in.dgn", "drawing");
        write("out/in.dwg", old);
        expect(behave);
        const Conversion done = convert(ToDwg, "in.dgn", "out/x");
        QCOMPARE(done.ok, !result.isNull());
        QCOMPARE(done.error, done.ok ? earlier : replyUnusable());
        QCOMPARE(done.path, done.ok ? folder->path() + "/out/in.dwg" : QString("in.dgn"));
        QCOMPARE(read("out/in.dwg"), done.ok ? result : old);
        QCOMPARE(filesHere(), 2);
        QVERIFY(logged.isEmpty());
    }

    void aFailureOfTheOtherWayIsLogged()
    {
        write("in.dwg", "drawing");
        expect(behaviour::answer("<soap:Fault/>", 500));
        const Conversion done = convert(ToDgn, "in.dwg", "out.dgn");
        QVERIFY(!done.ok && done.error == replyUnusable());
        QCOMPARE(lastConversionFailure(), CloudFailure::NotConverted);
        QCOMPARE(logged, QStringList("0:" + replyUnusable()));
        QVERIFY(!QFile::exists("out.dgn"));
    }

    void anUnreadableDrawingIsSentAsNothing()
    {
        // The last has fewer bytes than it says, as a file that gets shorter while it is read.
        for (const QString in : {"missing/x.dgn", "out", "", "/sys/devices/system/cpu/online"}) {
            expect(behaviour::answer("<soap:Fault/>", 500));
            QVERIFY(!convert(ToDwg, in, "out/x").ok);
            QCOMPARE(peer->requests().last().body, requestFor(ToDwg, QByteArray()));
            QCOMPARE(filesHere(), 0);
        }
    }

    void aResultThatCannotBeWrittenIsNotReported()
    {
        write("in.dwg", "drawing");
        write("old", old);
        for (const QString out : {"missing/x.dgn", "out", "old/x.dgn", ""}) {
            expect(behaviour::answer(answerWith(ToDgn, "bmV3")));
            const Conversion done = convert(ToDgn, "in.dwg", out);
            QVERIFY(done.ok && done.error == earlier && logged.isEmpty());
            QCOMPARE(lastConversionFailure(), CloudFailure::NotWritten);
            QCOMPARE(read("old"), old);
            QCOMPARE(filesHere(), 2);
        }
    }

    void cleanup()
    {
        peer.reset();
        QDir::setCurrent(QDir::rootPath());
        folder.reset();
    }

private:
    void expect(const Behaviour& behave) { peer->expect("POST", "/NrvConRnx.asmx", behave); }

    /// How many files there are: a temporary one that was left behind would be seen.
    int filesHere() const
    {
        int count = 0;
        QDirIterator files(
            folder->path(), QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        for (; files.hasNext(); files.next())
            ++count;
        return count;
    }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<ScriptedPeer> peer;
};

QTEST_MAIN(TestCadConversion)
#include "tst_cadconversion.moc"
