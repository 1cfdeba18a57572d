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
#include <sys/stat.h>

using namespace tav;

enum Direction
{
    ToDwg,
    ToDgn
};

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

QStringList logged;

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
    done.ok = direction == ToDwg ? dgn2Dwg(done.path, done.error, out) : dwg2Dgn(in, done.error, out);
    return done;
}
} // namespace

/// In place of the host's, whichever it is: a program's own functions go before those of its libraries.
void SendLogInfo(const char* text, int level)
{
    logged += QString::number(level) + ':' + QString::fromLocal8Bit(text);
}

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

    void convertsByteForByte()
    {
        for (const int size : {0, 1, 2, block, 2 * block + 2})
            for (const auto direction : {ToDwg, ToDgn}) {
                const QByteArray drawing = pattern(size);
                const QByteArray result = "converted" + drawing.toUpper();
                write("in.dgn", drawing);
                expect(behaviour::answer(answerWith(direction, result.toBase64())));
                const Conversion done = convert(direction, "in.dgn", "out/in.dwg");
                QVERIFY(done.ok && done.error == earlier && logged.isEmpty());
                QVERIFY2(read("out/in.dwg") == result, QByteArray::number(size));
                QVERIFY(read("in.dgn") == drawing);

                const RecordedRequest request = peer->requests().last();
                QVERIFY(request.body == requestFor(direction, drawing));
                QCOMPARE(request.header("Content-Type"), QByteArray("text/xml; charset=utf-8"));
                QCOMPARE(request.header("SOAPAction"), "http://tempuri.org/" + operationOf(direction));
                QVERIFY(request.header("Authorization").isNull());
            }
    }

    void writesWhereItIsTold()
    {
        const struct
        {
            QString in;
            QString out;
            QString written; // "%" is the absolute path of the folder
            Direction direction = ToDwg;
        } rows[]{
            {"x.dgn", "", "x.dwg"},
            {"a.dgn.d/x.dgn.dgn", "", "a.dwg.d/x.dwg.dwg"},
            {"X.DGN", "", "X.DGN"},
            {"drawing", "", "drawing"},
            {"x.v8.dgn", "out/any.dwg", "%/out/x.dwg"},
            {"图 1.dgn", "%/out/", "%/out/图 1.dwg"},
            {"a.dgn.d/x.dgn", "other.dwg", "%/x.dwg"},
            {"x.dwg", "out/y", "out/y", ToDgn},
            {"x.dwg", "x.dwg", "x.dwg", ToDgn},
        };
        for (auto [in, out, written, direction] : rows) {
            cleanup();
            init();
            write(in, "drawing");
            expect(behaviour::answer(answerWith(direction, "bmV3")));
            const Conversion done = convert(direction, in, out.replace('%', folder->path()));
            QVERIFY2(done.ok, qPrintable(done.error));
            QCOMPARE(done.path, written.replace('%', folder->path()));
            QCOMPARE(read(done.path), QByteArray("new"));
            QCOMPARE(filesHere(), done.path == in ? 1 : 2);
        }
    }

    void takesTheWholeResultOrNothing()
    {
        const auto text = [](const QByteArray& base64) { return answerWith(ToDwg, base64); };
        const auto tagged = [](const QByteArray& opening, const QByteArray& closing) {
            return "<r>\n<" + opening + ">QUJD</" + closing + ">\n</r>";
        };
        const QByteArray name = "ConDgn2DwgResult";
        const QByteArray none;
        const struct
        {
            QByteArray reply;
            QByteArray result; // null: it fails
            int status = 200;
        } rows[]{
            {tagged("ns:" + name, "ns:" + name), "ABC"},
            {"<ConDwg2DgnResult>REVG</ConDwg2DgnResult>" + tagged(name, name), "ABC"},
            {tagged(name + " xmlns=\"http://tempuri.org/\" a='1'", name), "ABC"},
            {tagged(name + " ", name + " "), "ABC"},
            {text("QU\r\nJD\nREVG\r\n"), "ABCDEF"},
            {text("QQ=="), "A"},
            {text("QUJD"), "ABC", 500},
            {text(" \r\n "), none},
            {"<faultstring>no " + name + " for QUJD " + name + "</faultstring>", none, 500},
            {"<r><" + name + "/></r>", none},
            {tagged(name, name).chopped(8), none},
            {text("QUI"), none}, // padding missing
            {text("QUJDR"), none},
            {text("QQ==QUJD"), none},
            {text("-_-_"), none}, // the alphabet of addresses
            {text("<file>QUJD</file>"), none},
        };
        write("in.dgn", "drawing");
        for (const auto& [reply, result, status] : rows) {
            write("out/in.dwg", old);
            expect(behaviour::answer(reply, status));
            const Conversion done = convert(ToDwg, "in.dgn", "out/x");
            QVERIFY2(done.ok == !result.isNull(), reply);
            QCOMPARE(done.error, done.ok ? earlier : replyUnusable());
            QCOMPARE(done.path, done.ok ? folder->path() + "/out/in.dwg" : QString("in.dgn"));
            QCOMPARE(read("out/in.dwg"), done.ok ? result : old);
            QCOMPARE(filesHere(), 2);
            QVERIFY(logged.isEmpty());
        }
    }

    void tellsWhatTheServiceSays()
    {
        const QByteArray json = R"({"summary":"to DWG\nResult","leftOut":{"DIMENSION":2,"a <b>":1}})";
        const auto inHeader = [](const QByteArray& report, const QByteArray& rest) {
            return "<e><Header><ConversionReport xmlns=\"u\">" + QString(report).toHtmlEscaped().toUtf8()
                + "</ConversionReport></Header>" + rest + "</e>";
        };
        const QByteArray result = "<ConDgn2DwgResult>QUJD</ConDgn2DwgResult>";
        const QByteArray fault = "<Fault><faultstring>it is\n too old: &lt;R9&gt;</faultstring></Fault>";
        const QByteArray encoded = "X-Conversion-Report: " + json.toBase64() + "\r\n";
        const struct
        {
            QByteArray reply, headers;
            QString refusal;
            bool hasReport;
        } rows[]{
            {inHeader(json, result), {}, {}, true},
            {"<e>" + result + "</e>", encoded, {}, true},
            {"<e>" + fault + "</e>", encoded, "it is too old: <R9>", true},
            {inHeader("[1]", fault), {}, "it is too old: <R9>", false},
            {inHeader(json, result).left(80), {}, {}, false},
            {"<e><faultstring>no end", {}, {}, false},
            {{}, "X-Conversion-Report: ?\r\n", {}, false},
        };
        write("in.dgn", "drawing");
        for (const auto& [reply, headers, refusal, hasReport] : rows) {
            expect(behaviour::answer(reply, 500, headers));
            CloudConversionReport report;
            QString path = "in.dgn", error;
            dgn2Dwg(path, error, "out/x", {}, &report);
            QCOMPARE(report.refusal, refusal);
            QVERIFY2(report.json == (hasReport ? json : QByteArray()), reply);
            QCOMPARE(report.summary, hasReport ? QString("to DWG Result") : QString());
            QCOMPARE(report.leftOut, hasReport ? QStringList({"2 DIMENSION", "1 a <b>"}) : QStringList());
        }
    }

    void anUnreadableDrawingIsSentEmpty()
    {
        ::mkfifo("pipe", 0600); // nobody fills it
        for (const QString in : {"missing/x.dgn", "out", "", "pipe"})
            for (const auto direction : {ToDwg, ToDgn}) {
                expect(behaviour::answer("<soap:Fault/>", 500));
                const Conversion done = convert(direction, in, "out/x");
                QVERIFY(!done.ok && done.error == replyUnusable());
                QCOMPARE(lastConversionFailure(), CloudFailure::NotConverted);
                QCOMPARE(logged, direction == ToDgn ? QStringList("0:" + replyUnusable()) : QStringList());
                QCOMPARE(peer->requests().last().body, requestFor(direction, QByteArray()));
                QCOMPARE(filesHere(), 1);
            }
    }

    void aDrawingThatGetsShorterIsNotConverted()
    {
        // It has fewer bytes than it says.
        const Behaviour service = [](PeerConnection& c) {
            if (c.readHead() && !c.readBody())
                c.close();
        };
        expect(service);
        const Conversion done = convert(ToDwg, "/sys/devices/system/cpu/online", "out/x");
        QVERIFY(!done.ok && done.error == replyUnusable());
        QVERIFY(!peer->requests().last().complete);
        QCOMPARE(filesHere(), 0);
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
