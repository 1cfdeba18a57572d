// SPDX-License-Identifier: MIT
#include "PlatformUnderTest.h"

#include <QDir>
#include <QJsonArray>
#include <httplib.h>

namespace {

const QByteArray clientCredential = "Basic dGF2LWxvY2FsOnRhdi1sb2NhbC1zZWNyZXQ=";
const QByteArray boundary = "boundary_of_tests";
constexpr int startTimeout = 20000;

QByteArray asText(const QJsonValue& value)
{
    return value.toVariant().toString().toUtf8();
}

} // namespace

QByteArray Answer::data(const QString& name) const
{
    const QJsonValue data = json().value("data");
    return asText(name.isEmpty() ? data : data.toObject().value(name));
}

QByteArrayList Answer::items(const QString& name) const
{
    QByteArrayList values;
    for (const auto& item : json().value("data").toArray())
        values += asText(item.toObject().value(name));
    return values;
}

Answer Client::send(
    const char* method, const QByteArray& path, const QByteArray& body, const FormFields& headers) const
{
    httplib::Client http("127.0.0.1", m_port);
    http.set_url_encode(false);
    if (!m_address.empty())
        http.set_interface(m_address);
    http.set_read_timeout(30);
    httplib::Request request;
    request.method = method;
    request.path = (path.startsWith('/') ? path : "/project/" + path).toStdString();
    request.body = body.toStdString();
    for (const auto& [name, value] : headers + FormFields{{"Authorization", m_authorization}})
        if (!value.isEmpty())
            request.set_header(name.toStdString(), value.toStdString());
    const httplib::Result result = http.send(request);
    if (!result)
        return {};
    const auto header = [&](const char* name) {
        return QByteArray::fromStdString(result->get_header_value(name));
    };
    return {result->status, QByteArray::fromStdString(result->body), header("Content-Digest"),
        header("Digest"), header("X-Conversion-Report"), header("Retry-After"), header("Content-Range")};
}

Answer Client::postForm(const QByteArray& path, const FormFields& fields) const
{
    return post(path, multipart(fields), multipartType());
}

Answer Client::upload(const QByteArray& path, const FormFields& fields, const QByteArray& fileName,
    const QByteArray& content) const
{
    const QByteArray disposition =
        "Content-Disposition: form-data; name=\"file\"; filename=\"" + fileName + "\"\r\n\r\n";
    return post(path, multipart(fields, disposition + content), multipartType());
}

void PlatformUnderTest::start(const QStringList& options)
{
    m_process.setStandardErrorFile(m_logs.filePath("log"));
    QStringList all = {"--listen", "127.0.0.1:0", "--demo-accounts"};
    if (!options.contains("--data"))
        all += {"--data", m_directory.path()};
    if (!options.contains("--log-level") && !options.contains("--config"))
        all += {"--log-level", "error"};
    m_process.start(program(), all + options);
    QByteArray line;
    while (!line.endsWith('\n') && m_process.waitForReadyRead(startTimeout))
        line += m_process.readLine();
    const auto ready =
        QRegularExpression("^tav-local-platform ready on https?://127.0.0.1:(\\d+)\n$").match(line);
    if (!ready.hasMatch())
        qFatal("The platform did not start; it said \"%s\"", (line + log()).constData());
    m_port = ready.captured(1).toInt();
}

void PlatformUnderTest::restart(const QStringList& options)
{
    stop();
    start(options);
}

void PlatformUnderTest::kill()
{
    m_process.kill();
    m_process.waitForFinished(startTimeout);
}

int PlatformUnderTest::stop()
{
    m_process.terminate();
    if (!m_process.waitForFinished(startTimeout) || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

QByteArray PlatformUnderTest::log() const
{
    QFile file(m_logs.filePath("log"));
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

QStringList PlatformUnderTest::storedFiles() const
{
    return QDir(data() + "/files").entryList(QDir::Files) + QDir(data() + "/incoming").entryList(QDir::Files);
}

QByteArray PlatformUnderTest::sentCode(const QString& address) const
{
    const QDir outbox(data() + "/outbox", {}, QDir::Name | QDir::Reversed); // by time, the newest first
    QFile file(outbox.filePath(outbox.entryList({"*-" + address + ".txt"}, QDir::Files).value(0)));
    file.open(QIODevice::ReadOnly);
    return QRegularExpression("\nCode: (.*)").match(file.readAll()).captured(1).toLatin1();
}

bool PlatformUnderTest::connectTo(QTcpSocket& socket) const
{
    socket.connectToHost("127.0.0.1", static_cast<quint16>(m_port));
    return socket.waitForConnected();
}

Client PlatformUnderTest::asClient() const
{
    return as(clientCredential);
}

Client PlatformUnderTest::signedIn(const QByteArray& demoUser) const
{
    const QJsonObject answer = signIn(demoUser, wirePassword(demoUser)).json();
    return as("Bearer " + answer.value("access_token").toString().toLatin1());
}

Answer PlatformUnderTest::signIn(const QByteArray& user, const QByteArray& wirePassword) const
{
    return asClient().post("/auth/oauth/token?grant_type=password",
        "username=" + user + "&password=" + wirePassword + "&scope=server",
        "application/x-www-form-urlencoded");
}

QByteArray PlatformUnderTest::wirePassword(const QByteArray& demoUser)
{
    // demo-NAME-1 under the key tav-local-key-16, as OpenSSL's command line enciphers it.
    static const QMap<QByteArray, QByteArray> cipherTexts = {
        {"alice", "zzWW4pAe//Bbf6kbV3wnpQ=="},
        {"bob", "6jFGRbSvMLEAL8DY1ErfrQ=="},
        {"carol", "Mcf+MemX1Q/OedFsMCOIFg=="},
    };
    return cipherTexts.value(demoUser).toPercentEncoding();
}

QString PlatformUnderTest::program()
{
    return QStringLiteral(TAV_LOCAL_PLATFORM);
}

QByteArray addProject(const Client& client, const QByteArray& title, const QByteArray& software)
{
    const FormFields form = {{"sourceClient", software}, {"projectTitle", title}, {"description", "d"}};
    return client.postForm("cloudProjectInfo/add", form).data();
}

QByteArray addGroup(const Client& client, const QByteArray& name)
{
    const QByteArray body = "{\"groupName\":\"" + name + "\"}";
    return client.post("cloudProjectGroup/saveOrUpdate", body, "application/json").data();
}

QByteArray uploadSharedFile(const Client& client, const QByteArray& project, const QByteArray& name,
    const QByteArray& content, const QByteArray& supportType)
{
    const FormFields form = {{"projectId", project}, {"supportTypeId", supportType}, {"typeFlag", "1"}};
    return client.upload("cloudProjectShare/upload", form, name, content).data("logicalId");
}

QByteArray multipart(const FormFields& fields, const QByteArray& filePart)
{
    QByteArray body;
    for (const auto& [name, value] : fields)
        body += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + name + "\"\r\n\r\n" + value
            + "\r\n";
    if (!filePart.isEmpty())
        body += "--" + boundary + "\r\n" + filePart + "\r\n";
    return body + "--" + boundary + "--\r\n";
}

QByteArray multipartType()
{
    return "multipart/form-data; boundary=\"" + boundary + "\"";
}
