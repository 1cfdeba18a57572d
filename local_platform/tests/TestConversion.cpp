// SPDX-License-Identifier: MIT
#include "Soap.h"

#include <QDir>
#include <future>

namespace {

/// The converter's side of the contract, in a few lines: what it does is told by the drawing.
const char converterScript[] = R"(
import { existsSync, openSync, readFileSync, ftruncateSync, writeFileSync } from 'node:fs';
const [input, output, , report, , codePage] = process.argv.slice(2);
const drawing = readFileSync(input);
const text = drawing.toString('latin1', 0, 10);
const orders = {
    refuse: () => { console.error('no <drawing> & no hope\nsecond line'); process.exitCode = 1; },
    hold: async () => {
        writeFileSync('held', '');
        while (!existsSync('go')) await new Promise((resolve) => setTimeout(resolve, 10));
        writeFileSync(output, 'held');
    },
    hang: () => setInterval(() => {}, 1000),
    burst: () => process.abort(),
    look: () => writeFileSync(output, JSON.stringify({ cwd: process.cwd(), env: Object.keys(process.env) })),
    rest: () => {},
    nest: () => {
        writeFileSync(report, '['.repeat(500000) + ']'.repeat(500000));
        writeFileSync(output, 'nested');
    },
    large: () => ftruncateSync(openSync(output, 'w'), 600000000),
    tell: () => {
        writeFileSync(report, JSON.stringify({ summary: 'done', layers: { '<ConDgn2DwgResult>': 1 }, codePage }));
        writeFileSync(output, 'drawing');
    },
};
const convert = () => writeFileSync(output, Buffer.concat([Buffer.from(`${input}>${output}:`), drawing]));
await (orders[text] ?? convert)();
)";

} // namespace

class TestConversion : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QFile script(m_scripts.filePath("converter.mjs"));
        QVERIFY(script.open(QIODevice::WriteOnly) && script.write(converterScript) > 0);
        script.close();
        m_platform = std::make_unique<PlatformUnderTest>(QStringList{"--converter", script.fileName(),
            "--max-drawing-size", "3000000", "--conversion-time-limit", "3", "--log-level", "off"});
    }

    void converts()
    {
        const std::tuple<QByteArray, QByteArray, QByteArray> rows[]{
            {"ConDwg2Dgn", QByteArray("AC1015\0x", 8), "in.dwg>out.dgn:"},
            {"ConDgn2Dwg", QByteArray(3000000, '\x7f'), "in.dgn>out.dwg:"}, // the largest
        };
        for (const auto& [operation, drawing, way] : rows) {
            QByteArray base64 = drawing.toBase64();
            for (int at = 76; at < base64.size(); at += 1000)
                base64.insert(at, "\r\n");
            const Answer answer = post(operation, request(operation, base64));
            QCOMPARE(answer.status, 200);
            const QString result = elementText(answer.body, operation + "Result");
            QVERIFY2(QByteArray::fromBase64(result.toLatin1()) == way + drawing, operation);
        }
    }

    void faults()
    {
        const auto drawing = [](const QByteArray& text) { return request("ConDgn2Dwg", text.toBase64()); };
        const std::pair<QByteArray, QString> requests[]{
            {drawing("refuse"), "no <drawing> & no hope"},
            {drawing("hang"), "The drawing takes too long to convert"},
            {drawing("burst"), "The drawing needs too much memory or space to convert"},
            {drawing("rest"), "The conversion failed; the platform's log says why"},
            {drawing("large"), "The converted drawing is too large"},
            {QByteArray(200000, 'x'), "The request holds no drawing to convert"},
            {QByteArray(65500, ' ') + drawing("refuse"), "The request holds no drawing to convert"},
            {QByteArray(65000, ' ') + drawing("refuse"), "no <drawing> & no hope"},
            {request("ConDgn2Pdf", "eA=="), "The request holds no drawing to convert"},
            {drawing(""), "The drawing is empty"},
            {request("ConDgn2Dwg", "eHh4e"), "The drawing is not valid Base64"},
            {drawing(QByteArray(3000001, 'x')), "The drawing is too large; at most 3000000 bytes are taken"},
            {request("ConDwg2Dgn", "eA=="),
                "The SOAPAction \"http://tempuri.org/ConDgn2Dwg\" does not fit the request"},
        };
        for (const auto& [body, reason] : requests) {
            const Answer answer = post("ConDgn2Dwg", body);
            QCOMPARE(elementText(answer.body, "faultstring"), reason);
            QCOMPARE(answer.status, 500);
            QVERIFY(!answer.body.contains("Result"));
        }
    }

    void reportTravelsWithTheResult()
    {
        const auto told = [&](const FormFields& more) {
            return m_platform->as().post("/NrvConRnx.asmx",
                request("ConDgn2Dwg", QByteArray("tell").toBase64()), "text/xml; charset=utf-8",
                FormFields{{"SOAPAction", "http://tempuri.org/ConDgn2Dwg"}} + more);
        };
        const Answer answer = told({});
        QCOMPARE(answer.body.count("ConDgn2DwgResult"), 2);
        const QString report = elementText(answer.body, "ConversionReport");
        QVERIFY2(report.contains("<ConDgn2DwgResult>"), qPrintable(report));
        QCOMPARE(QByteArray::fromBase64(answer.conversionReport), QByteArray("{\"summary\":\"done\"}"));
        QVERIFY(elementText(told({{"X-Drawing-Code-Page", "big5"}}).body, "ConversionReport")
                    .contains("\"codePage\":\"big5\""));
        QCOMPARE(told({{"X-Drawing-Code-Page", "--seconds"}}).status, 500);
    }

    void headIsReadOnce()
    {
        // Read again with each of its pieces, it took minutes.
        const std::pair<QByteArray, QString> heads[]{
            {QByteArray(40000, '<') + '>' + QByteArray(20000, 'x'),
                "The request holds no drawing to convert"},
            {QByteArray("<a>").repeated(20000) + request("ConDgn2Dwg", QByteArray("refuse").toBase64()),
                "no <drawing> & no hope"},
            {"<y:ConDgn2Dwg x='1'\n><z:file\n>" + QByteArray("refuse").toBase64() + "</z:file>",
                "no <drawing> & no hope"},
        };
        for (const auto& [head, reason] : heads) {
            QTcpSocket socket;
            QVERIFY(m_platform->connectTo(socket));
            socket.write(
                "POST /NrvConRnx.asmx HTTP/1.1\r\nHost: x\r\nConnection: close\r\nContent-Type: text/xml\r\n"
                "SOAPAction: http://tempuri.org/ConDgn2Dwg\r\nTransfer-Encoding: chunked\r\n\r\n");
            for (const char byte : head)
                socket.write(QByteArray("1\r\n") + byte + "\r\n");
            socket.write("0\r\n\r\n");
            while (socket.waitForReadyRead(30000)) { }
            QCOMPARE(socket.state(), QAbstractSocket::UnconnectedState);
            const QByteArray answer = socket.readAll();
            QCOMPARE(elementText(answer.mid(answer.indexOf("<?xml")), "faultstring"), reason);
        }
    }

    void reportOfAnyShapeDoesNoHarm()
    {
        const Answer answer = post("ConDgn2Dwg", request("ConDgn2Dwg", QByteArray("nest").toBase64()));
        QCOMPARE(elementText(answer.body, "ConDgn2DwgResult"), QString(QByteArray("nested").toBase64()));
    }

    void addressHasABudget()
    {
        PlatformUnderTest platform({"--converter", m_scripts.filePath("converter.mjs"),
            "--conversions-per-hour", "2", "--log-level", "off"});
        for (const int status : {200, 500, 429}) {
            const QByteArray drawing = status == 500 ? "" : "eHh4"; // refused, it counts as well
            const Answer answer = convert(platform.as(), "ConDgn2Dwg", request("ConDgn2Dwg", drawing));
            QCOMPARE(answer.status, status);
            QCOMPARE(answer.retryAfter.toInt() > 0, status == 429);
        }
        QCOMPARE(convert(platform.as().from("127.0.0.2"), "ConDgn2Dwg", request("ConDgn2Dwg", "eHh4")).status,
            200);
    }

    void fullQueueSaysWhenToTryAgain()
    {
        PlatformUnderTest platform({"--converter", m_scripts.filePath("converter.mjs"),
            "--conversions-at-once", "1", "--conversion-queue", "0", "--log-level", "off"});
        const QByteArray hold = request("ConDgn2Dwg", QByteArray("hold").toBase64());
        auto held =
            std::async(std::launch::async, [&] { return convert(platform.as(), "ConDgn2Dwg", hold); });
        const QDir scratch(platform.data() + "/scratch");
        const auto folder = [&] {
            const QString name = scratch.entryList(QDir::Dirs | QDir::NoDotAndDotDot).value(0);
            return QFile::exists(scratch.filePath(name + "/held")) ? scratch.filePath(name) : QString();
        };
        QTRY_VERIFY_WITH_TIMEOUT(!folder().isEmpty(), 20000);

        const Answer refused =
            convert(platform.as().from("127.0.0.2"), "ConDgn2Dwg", request("ConDgn2Dwg", "eHh4"));
        QCOMPARE(refused.status, 503);
        QVERIFY(refused.retryAfter.toInt() > 0);
        QCOMPARE(elementText(refused.body, "faultstring"),
            QString("Too many drawings are waiting to be converted; try again later"));

        QFile go(folder() + "/go");
        QVERIFY(go.open(QIODevice::WriteOnly));
        QCOMPARE(held.get().status, 200);
    }

    void converterSeesOnlyItsFolderWhichGoes()
    {
        const Answer answer = post("ConDgn2Dwg", request("ConDgn2Dwg", QByteArray("look").toBase64()));
        const QByteArray seen =
            QByteArray::fromBase64(elementText(answer.body, "ConDgn2DwgResult").toLatin1());
        QVERIFY2(seen.contains("\"cwd\":\"" + m_platform->data().toUtf8() + "/scratch/"), seen);
        QVERIFY2(seen.contains("\"env\":[]"), seen);
        const QDir scratch(m_platform->data() + "/scratch");
        QCOMPARE(scratch.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    }

private:
    Answer post(const QByteArray& operation, const QByteArray& body) const
    {
        return convert(m_platform->as(), operation, body);
    }

    QTemporaryDir m_scripts;
    std::unique_ptr<PlatformUnderTest> m_platform;
};

QTEST_GUILESS_MAIN(TestConversion)
#include "TestConversion.moc"
