// SPDX-License-Identifier: MIT
#include "Soap.h"

#include <QDir>
#include <linux/landlock.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// A converter that a drawing has taken over: it runs the drawing, and says what came of it.
const char takenOver[] = R"(
import * as fs from 'node:fs';
import * as net from 'node:net';
import * as dgram from 'node:dgram';
import * as os from 'node:os';
import { execFileSync } from 'node:child_process';
import { Worker } from 'node:worker_threads';
const [input, output] = process.argv.slice(2);
const modules = { fs, net, dgram, os, execFileSync, Worker };
const happened = (emitter, event) => new Promise((resolve, reject) => emitter.once(event, resolve).once('error', reject));
const forever = () => new Promise(() => setInterval(() => {}, 1000));
const Attempt = (async () => {}).constructor;
try {
    const attempt = new Attempt(...Object.keys(modules), 'happened', 'forever', 'output', fs.readFileSync(input, 'utf8'));
    await attempt(...Object.values(modules), happened, forever, output);
    fs.writeFileSync(output, 'done');
} catch (error) {
    fs.writeFileSync(output, `${error.code} ${error.message}`);
}
process.exit();
)";

bool isAlive(const QByteArray& process)
{
    QFile status("/proc/" + process + "/stat");
    return status.open(QIODevice::ReadOnly) && !status.readAll().contains(") Z ");
}

} // namespace

class TestCage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QFile script(m_scripts.filePath("converter.mjs"));
        QVERIFY(script.open(QIODevice::WriteOnly) && script.write(takenOver) > 0);
        script.close();
        m_script = script.fileName();
        m_platform = std::make_unique<PlatformUnderTest>(QStringList{"--converter", m_script});
        m_hasLandlock =
            ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) > 0;
    }

    void converterIsKeptFrom_data()
    {
        QTest::addColumn<bool>("byLandlock");
        QTest::addColumn<QByteArray>("attempt");
        const std::tuple<const char*, bool, QByteArray> rows[]{
            {"reading a file", true, "fs.readFileSync(outside)"},
            {"reading the platform's database", true, "fs.readFileSync(data + '/platform.sqlite')"},
            {"seeing others' drawings", true, "fs.readdirSync(data + '/scratch')"},
            {"reading through a link of its own", true,
                "fs.symlinkSync(outside, 'link'); try { fs.readFileSync('link') } finally { "
                "fs.unlinkSync('link') }"},
            {"taking a file into its folder", true, "fs.linkSync(outside, 'taken'); fs.unlinkSync('taken')"},
            {"reading the platform's environment", true, "fs.readFileSync(`/proc/${process.ppid}/environ`)"},
            {"writing a new file", true, "fs.writeFileSync(outside + '.new', '')"},
            {"changing a file", true, "fs.appendFileSync(outside, 'x')"},
            {"emptying a file", false, "fs.truncateSync(outside)"},
            {"changing its converter", true, "fs.appendFileSync(process.argv[1], '')"},
            {"removing a file", true, "fs.unlinkSync(removable)"},
            {"changing who may read a file", false, "fs.chmodSync(outside, 0o644)"},
            {"dating a file", false, "fs.utimesSync(outside, 1, 1)"},
            {"connecting by TCP", false, "await happened(net.connect(port, '127.0.0.1'), 'connect')"},
            {"listening by TCP", false,
                "await happened(net.createServer().listen(0, '127.0.0.1'), 'listening')"},
            {"sending by UDP", false,
                "const socket = dgram.createSocket('udp4');"
                "socket.send('x', 9, '127.0.0.1'); await happened(socket, 'listening')"},
            {"listening at a local socket", false,
                "const server = net.createServer().listen('s'); await happened(server, 'listening'); "
                "server.close()"},
            {"starting a program", false, "execFileSync('/bin/true')"},
            {"starting itself again", false, "execFileSync(process.execPath, ['-e', '0'])"},
            {"signalling the platform", false, "process.kill(process.ppid, 0)"},
            {"slowing the platform down", false, "os.setPriority(process.ppid, 1)"},
            {"taking more memory than is granted", false,
                "globalThis.taken = [Buffer.alloc(2.5e9), Buffer.alloc(2.5e9)]"},
            {"making a file larger than is granted", false,
                "const file = fs.openSync('large', 'w'); try { fs.ftruncateSync(file, 3e9) }"
                "finally { fs.unlinkSync('large') }"},
        };
        for (const auto& [name, byLandlock, attempt] : rows)
            QTest::newRow(name) << byLandlock << attempt;
    }

    void converterIsKeptFrom()
    {
        QFETCH(bool, byLandlock);
        QFETCH(QByteArray, attempt);
        if (byLandlock && !m_hasLandlock)
            QSKIP("This kernel lacks Landlock");
        for (const char* name : {"outside", "removable"}) {
            QFile file(m_outside.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("secret") > 0);
        }
        attempt.prepend("const outside = '" + m_outside.filePath("outside").toUtf8() + "', removable = '"
            + m_outside.filePath("removable").toUtf8() + "', data = '" + m_platform->data().toUtf8()
            + "', port = " + QByteArray::number(m_platform->port()) + ";");

        const Answer answer =
            convert(m_platform->as(), "ConDgn2Dwg", request("ConDgn2Dwg", attempt.toBase64()));
        const QByteArray result =
            QByteArray::fromBase64(elementText(answer.body, "ConDgn2DwgResult").toLatin1());
        const QString fault = elementText(answer.body, "faultstring");
        QVERIFY2(!result.startsWith("done"), result);
        QVERIFY2(!result.isEmpty() || fault == "The drawing needs too much memory or space to convert",
            answer.body);
        // Nothing but the cage is in the way: unshut, each attempt succeeds.
        QCOMPARE(unshut(attempt), QByteArray("done"));
    }

    void converterIsEndedFor_data()
    {
        QTest::addColumn<QByteArray>("attempt");
        QTest::newRow("many threads") << QByteArray(
            "for (let i = 0; i < 80; ++i) new Worker('setInterval(() => {}, 1000)', { eval: true });");
        QTest::newRow("many files") << QByteArray(
            "for (let i = 0; i < 300; ++i) fs.writeFileSync(`${i}`, '');");
        QTest::newRow("files that are large together")
            << QByteArray("for (let i = 0; i < 3; ++i) fs.ftruncateSync(fs.openSync(`${i}`, 'w'), 1e9);");
    }

    void converterIsEndedFor()
    {
        QFETCH(QByteArray, attempt);
        const Answer answer = convert(
            m_platform->as(), "ConDgn2Dwg", request("ConDgn2Dwg", (attempt + " await forever()").toBase64()));
        QCOMPARE(elementText(answer.body, "faultstring"),
            QString("The drawing needs too much memory or space to convert"));
    }

    void converterEndsWithThePlatform()
    {
        PlatformUnderTest platform({"--converter", m_script});
        QTcpSocket socket;
        const QByteArray process = startedBy(socket, platform);
        QVERIFY(isAlive(process));
        platform.kill();
        QTRY_VERIFY_WITH_TIMEOUT(!isAlive(process), 20000);
    }

    void converterEndsWithItsClient()
    {
        PlatformUnderTest platform({"--converter", m_script});
        QTcpSocket socket;
        const QByteArray process = startedBy(socket, platform);
        QVERIFY(isAlive(process));
        socket.abort();
        QTRY_VERIFY_WITH_TIMEOUT(!isAlive(process), 20000); // its time limit is longer
        QVERIFY(platform.as().get("/healthz").ok());
    }

private:
    /// The converter of a drawing that is sent over the socket and does not end; empty when it did not start.
    static QByteArray startedBy(QTcpSocket& socket, const PlatformUnderTest& platform)
    {
        const QByteArray body = request("ConDgn2Dwg",
            QByteArray("fs.writeFileSync('started', `${process.pid}.`); await forever()").toBase64());
        if (!platform.connectTo(socket))
            return {};
        socket.write(
            "POST /NrvConRnx.asmx HTTP/1.1\r\nHost: x\r\nSOAPAction: http://tempuri.org/ConDgn2Dwg\r\n"
            "Content-Type: text/xml\r\nContent-Length: "
            + QByteArray::number(body.size()) + "\r\n\r\n" + body);
        socket.flush();
        QByteArray process;
        const QDir scratch(platform.data() + "/scratch");
        if (!QTest::qWaitFor([&] { return !(process = startedIn(scratch)).isEmpty(); }, 20000))
            return {};
        return process;
    }

    /// What the attempt comes to in a node of this test's own.
    QByteArray unshut(const QByteArray& attempt) const
    {
        const QTemporaryDir folder;
        QFile drawing(folder.filePath("in"));
        if (!drawing.open(QIODevice::WriteOnly) || drawing.write(attempt) != attempt.size())
            return "no drawing";
        drawing.close();
        QProcess node;
        node.setWorkingDirectory(folder.path());
        node.start("node", {m_script, "in", "out"});
        node.waitForFinished();
        QFile result(folder.filePath("out"));
        return result.open(QIODevice::ReadOnly) ? result.readAll() : QByteArray("nothing");
    }

    /// The process that says in a folder of these that it has started.
    static QByteArray startedIn(const QDir& scratch)
    {
        for (const QString& folder : scratch.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile file(scratch.filePath(folder + "/started"));
            if (file.open(QIODevice::ReadOnly)) {
                const QByteArray text = file.readAll();
                return text.endsWith('.') ? text.chopped(1) : QByteArray();
            }
        }
        return {};
    }

    QTemporaryDir m_scripts;
    QTemporaryDir m_outside;
    QString m_script;
    bool m_hasLandlock = false;
    std::unique_ptr<PlatformUnderTest> m_platform;
};

QTEST_GUILESS_MAIN(TestCage)
#include "TestCage.moc"
