// SPDX-License-Identifier: MIT
#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QPair>
#include <QProcess>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QVector>
#include <QtTest>

struct Answer
{
    int status = 0; ///< 0: no answer
    QByteArray body;
    QByteArray contentDigest;
    QByteArray digest;
    QByteArray conversionReport;
    QByteArray retryAfter;
    QByteArray contentRange;

    QJsonObject json() const { return QJsonDocument::fromJson(body).object(); }
    int code() const { return json().value("code").toInt(-1); }
    QByteArray msg() const { return json().value("msg").toString().toUtf8(); }
    bool ok() const { return status == 200 && code() == 0; }
    /// The data, a text or a number, or its member of that name.
    QByteArray data(const QString& name = {}) const;
    /// The member of that name of each item of the data.
    QByteArrayList items(const QString& name) const;
};

using FormFields = QVector<QPair<QByteArray, QByteArray>>;

/// Requests of one user to one platform. A path without a leading slash is one under /project/.
class Client
{
public:
    explicit Client(int port, const QByteArray& authorization = {})
        : m_port(port)
        , m_authorization(authorization)
    {
    }

    Answer get(const QByteArray& path, const FormFields& headers = {}) const
    {
        return send("GET", path, {}, headers);
    }
    Answer del(const QByteArray& path) const { return send("DELETE", path); }
    Answer post(const QByteArray& path, const QByteArray& body = {}, const QByteArray& type = {},
        const FormFields& moreHeaders = {}) const
    {
        return send("POST", path, body, moreHeaders + FormFields{{"Content-Type", type}});
    }
    Answer postForm(const QByteArray& path, const FormFields& fields) const;
    Answer upload(const QByteArray& path, const FormFields& fields, const QByteArray& fileName,
        const QByteArray& content) const;

    QByteArray authorization() const { return m_authorization; }
    /// The same at another address of this machine, such as 127.0.0.2.
    Client from(const std::string& address) const
    {
        Client other = *this;
        other.m_address = address;
        return other;
    }

private:
    Answer send(const char* method, const QByteArray& path, const QByteArray& body = {},
        const FormFields& headers = {}) const;

    int m_port;
    QByteArray m_authorization;
    std::string m_address;
};

/// A running server with a data directory that outlives restarts. Demo accounts are always there.
class PlatformUnderTest
{
public:
    explicit PlatformUnderTest(const QStringList& options = {}) { start(options); }
    ~PlatformUnderTest() { kill(); }

    /// On the same data, at another port.
    void restart(const QStringList& options = {});
    /// The end that no program can prepare for.
    void kill();
    /// The end that a server is asked for; returns its exit code.
    int stop();

    int port() const { return m_port; }
    int process() const { return static_cast<int>(m_process.processId()); }
    QString data() const { return m_directory.path(); }
    /// What it has said since its last start.
    QByteArray log() const;
    /// The files that uploads have left on disk, finished or not.
    QStringList storedFiles() const;
    /// The code of the newest message to the address.
    QByteArray sentCode(const QString& address) const;

    bool connectTo(QTcpSocket& socket) const;
    Client as(const QByteArray& authorization = {}) const { return Client(m_port, authorization); }
    Client asClient() const;
    Client signedIn(const QByteArray& demoUser) const;
    /// A password grant; the password as it travels: enciphered and percent-encoded.
    Answer signIn(const QByteArray& user, const QByteArray& wirePassword) const;

    static QByteArray wirePassword(const QByteArray& demoUser);
    static QString program();

private:
    void start(const QStringList& options);

    QTemporaryDir m_directory;
    QTemporaryDir m_logs;
    QProcess m_process;
    int m_port = 0;
};

// What is new comes back as its id as it goes into a request.
QByteArray addProject(
    const Client& client, const QByteArray& title = "Survey", const QByteArray& software = "SoftA");
QByteArray addGroup(const Client& client, const QByteArray& name);
QByteArray uploadSharedFile(const Client& client, const QByteArray& project, const QByteArray& name,
    const QByteArray& content, const QByteArray& supportType = "1");

QByteArray multipart(const FormFields& fields, const QByteArray& filePart = {});
QByteArray multipartType();
