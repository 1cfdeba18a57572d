// SPDX-License-Identifier: MIT
#include "Runners.h"
#include "TlsPeer.h"
#include "net/ReplyEnvelope.h"

#include <QLoggingCategory>
#include <QNetworkProxy>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace tav;

namespace {

QStringList lines;

void keepLine(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (QByteArray(context.category) == "tav.cloud")
        lines += (type == QtDebugMsg ? "debug: " : "warning: ") + text;
}

} // namespace

class TestRequestLog : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qInstallMessageHandler(keepLine);
        QLoggingCategory::setFilterRules("tav.cloud.debug=true");
    }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }

    void cleanup() { QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy); }

    void logsEveryRequestWithoutSecrets()
    {
        const QString file = folder.filePath("saved");
        for (const Runner& runner : allRunners("secret=1", file)) {
            lines.clear();
            ScriptedPeer peer;
            peer.expect(runner.method, "/admin/mail/reset/secret?secret", behaviour::answer("secret", 404));
            const QString address = peer.address() + "/admin/mail/reset/secret?secret";
            resultOf(runner, address, {{"Authorization", "secret"}});
            QCOMPARE(lines.size(), 1);
            QVERIFY2(lines[0].contains("/admin/mail/reset/*:") && !lines[0].contains("secret"),
                qPrintable(lines[0]));
        }
    }

    void saysHowARequestEnded()
    {
        const QString post = ": POST /admin/mobile/\\*: ";
        const std::pair<Behaviour, QString> ends[]{
            // with the log line as a pattern
            {behaviour::answer("{}"), "debug" + post + "200, NoError, 8 bytes sent, 2 received, \\d+ ms"},
            {behaviour::answer("{}", 401),
                "debug" + post + "401, AuthenticationRequiredError, 8 bytes sent, 2 received, \\d+ ms"},
            {behaviour::silent(), "warning" + post + "no status, .*: no complete reply in time"},
            {behaviour::closeAfter("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{"),
                "warning" + post
                    + "200, RemoteHostClosedError, 8 bytes sent, 1 received, .*: Connection closed"},
            {behaviour::answer("secret"), "warning" + post + "200, .*the reply could not be used"},
            {behaviour::answer("secret", 404),
                "warning" + post + "404, ContentNotFoundError, .*: Error transferring the address - .*"},
        };
        for (const auto& [behave, line] : ends) {
            lines.clear();
            ScriptedPeer peer;
            peer.expect("POST", "/admin/mobile/(+86)138%200000?x=%22%20%E5%9B%BE%20secret%26", behave);
            resultOf(posting("secret=1"), peer.address() + "/admin/mobile/(+86)138 0000?x=\" 图 secret%26",
                {{"Authorization", "Bearer secret"}}, 2000);
            QCOMPARE(lines.size(), 1);
            QVERIFY2(QRegularExpression('^' + line + '$').match(lines[0]).hasMatch(), qPrintable(lines[0]));
            QVERIFY2(!lines[0].contains("secret") && !lines[0].contains("138"), qPrintable(lines[0]));
        }
    }

    void saysWhyThereWasNoConnection()
    {
        const TlsPeer untrusted;
        const QString nobody = ScriptedPeer::refusedAddress();
        const std::tuple<QString, CloudFailure, QString> ends[]{
            {nobody, CloudFailure::NoConnection, "ConnectionRefusedError"},
            {"gopher://127.0.0.1", CloudFailure::Unusable, "gopher"},
            {untrusted.address(), CloudFailure::NotTrusted,
                "(certificate of \"Test peer\", issued by \"Test peer\""},
            {"http://platform.example", CloudFailure::NoConnection, "through the proxy 127.0.0.1:"},
        };
        for (const auto& [address, failure, part] : ends) {
            lines.clear();
            if (address.contains("example"))
                QNetworkProxy::setApplicationProxy(
                    {QNetworkProxy::HttpProxy, "127.0.0.1", quint16(QUrl(nobody).port()), "user", "secret"});
            QVERIFY(resultOf(posting("secret"), address + "/?a secret").failedWith(replyUnusable()));
            QCOMPARE(lastTransportFailure(), failure);
            QCOMPARE(lines.size(), 1);
            QVERIFY2(
                lines[0].startsWith("warning: POST /: ") && lines[0].contains(part), qPrintable(lines[0]));
            QVERIFY2(!lines[0].contains("secret"), qPrintable(lines[0]));
        }
    }

private:
    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(TestRequestLog)
#include "tst_requestlog.moc"
