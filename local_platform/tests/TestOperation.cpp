// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <csignal>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/// Runs the program to its end; its output, and its exit code as the last line.
QByteArray outcome(const QStringList& arguments)
{
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(PlatformUnderTest::program(), arguments);
    if (!program.waitForFinished())
        return "did not end";
    return program.readAll() + QByteArray::number(program.exitCode());
}

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written", qPrintable(path));
}

/// The socket of a service manager.
class Manager
{
public:
    explicit Manager(const QByteArray& path)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
        if (::bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            qFatal("There is no socket at %s", path.constData());
    }
    ~Manager() { ::close(m_socket); }

    QByteArray next()
    {
        char text[256];
        const ssize_t size = ::recv(m_socket, text, sizeof text, MSG_DONTWAIT);
        return size < 0 ? QByteArray() : QByteArray(text, static_cast<int>(size));
    }

private:
    int m_socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

} // namespace

/// What an administrator and the programs that watch over the platform see of it.
class TestOperation : public QObject
{
    Q_OBJECT

private slots:
    void checksItsConfiguration_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QByteArray>("said");
        QTest::addColumn<QByteArray>("exitCode");
        write(m_folder.filePath("good"),
            "listen = \"127.0.0.1:0\"\nlog-level = \"warning\"\nconversion-queue = 7\n");
        write(m_folder.filePath("misspelt"), "lissten = \"127.0.0.1:0\"\n");
        write(m_folder.filePath("range"), "conversion-queue = -1\n");
        write(m_folder.filePath("not.pem"), "no certificate");
        const QString pem = m_folder.filePath("not.pem");
        const QStringList data = {"--data", m_folder.filePath("new")};
        QTest::newRow("nothing but a new folder")
            << data << QByteArray("will be made new") << QByteArray("0");
        QTest::newRow("a good file") << data + QStringList{"--config", m_folder.filePath("good")}
                                     << QByteArray("The configuration is good.") << QByteArray("0");
        QTest::newRow("a misspelt name") << data + QStringList{"--config", m_folder.filePath("misspelt")}
                                         << QByteArray("lissten") << QByteArray();
        QTest::newRow("a value out of its range")
            << data + QStringList{"--config", m_folder.filePath("range")} << QByteArray("conversion-queue")
            << QByteArray();
        QTest::newRow("a file that is none") << data + QStringList{"--config", m_folder.filePath("none")}
                                             << QByteArray("none") << QByteArray();
        QTest::newRow("published secrets for others")
            << data + QStringList{"--listen", "0.0.0.0:0"} << QByteArray("published") << QByteArray("1");
        QTest::newRow("a folder of something else")
            << QStringList{"--data", m_folder.path()} << QByteArray(m_folder.path().toUtf8())
            << QByteArray("1");
        QTest::newRow("a certificate that is none")
            << data + QStringList{"--tls-certificate", pem, "--tls-key", pem} << QByteArray("certificate")
            << QByteArray("1");
    }

    void checksItsConfiguration()
    {
        QFETCH(QStringList, options);
        QFETCH(QByteArray, said);
        QFETCH(QByteArray, exitCode); ///< empty: any but 0
        const QByteArray result = outcome(QStringList{"--check-config"} + options);
        QVERIFY2(result.contains(said), result);
        QVERIFY2(exitCode.isEmpty() ? !result.endsWith("\n0") : result.endsWith("\n" + exitCode), result);
        QVERIFY(!QFile::exists(m_folder.filePath("new")));
    }

    void tellsItsVersion()
    {
        const QByteArray result = outcome({"--version"});
        QVERIFY2(QRegularExpression("^tav-local-platform \\d+\\.\\d+\\.\\d+\n0$").match(result).hasMatch(),
            result);
    }

    void tellsItsServiceManager()
    {
        const QByteArray path = m_folder.filePath("manager").toUtf8();
        Manager manager(path);
        qputenv("NOTIFY_SOCKET", path);
        PlatformUnderTest platform;
        qunsetenv("NOTIFY_SOCKET");
        QByteArray told;
        QTRY_VERIFY(!(told += manager.next()).isEmpty());
        QVERIFY2(told.startsWith("READY=1\nSTATUS=Ready on http://127.0.0.1:"), told);
        QCOMPARE(platform.stop(), 0);
        QCOMPARE(manager.next(), QByteArray("STOPPING=1"));
    }

    void readsItsLogLevelAgain()
    {
        const QString config = m_folder.filePath("config");
        write(config, "log-level = \"info\"\n");
        PlatformUnderTest platform({"--config", config});
        platform.as().get("/healthz");
        QVERIFY(!platform.log().contains("GET /healthz 200"));
        write(config, "log-level = \"debug\"\n");
        ::kill(platform.process(), SIGHUP);
        QTRY_VERIFY(platform.log().contains("The log level is debug"));
        platform.as().get("/healthz");
        QTRY_VERIFY(platform.log().contains("GET /healthz 200"));
        write(config, "log-level = \"loud\"\n");
        ::kill(platform.process(), SIGHUP);
        QTRY_VERIFY(platform.log().contains("The options stay as they are"));
        QVERIFY(platform.as().get("/healthz").ok());
        QCOMPARE(platform.stop(), 0);
    }

    void tellsItsHealth()
    {
        PlatformUnderTest platform;
        for (const char* path : {"/healthz", "/readyz"}) {
            QVERIFY(platform.as().get(path).ok());
            QCOMPARE(platform.as().post(path).status, 404);
        }
    }

    void documentNamesEveryRoute()
    {
        PlatformUnderTest platform({"--log-level", "debug"});
        QFile document(TAV_PROTOCOL);
        QVERIFY(document.open(QIODevice::ReadOnly));
        QCOMPARE(routes(document.readAll(), "(?:### |`)((?:GET|POST|DELETE) /[^` \\n?]*)"),
            routes(platform.log(), "Route (\\S+ \\S+)"));
    }

private:
    static QStringList routes(const QByteArray& text, const QString& pattern)
    {
        QSet<QString> found;
        for (auto match = QRegularExpression(pattern).globalMatch(text); match.hasNext();)
            found.insert(match.next().captured(1));
        QStringList sorted = found.values();
        sorted.sort();
        return sorted;
    }

    QTemporaryDir m_folder;
};

QTEST_GUILESS_MAIN(TestOperation)
#include "TestOperation.moc"
