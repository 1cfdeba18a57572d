// SPDX-License-Identifier: MIT
#pragma once

#include "net/HttpRunner.h"
#include "support/ScriptedPeer.h"

#include <QEventLoop>
#include <QFile>
#include <QVector>
#include <QtEndian>

#include <functional>
#include <thread>

/// One of the eight request functions with the same signature for all, so that a row can be any of them.
struct Runner
{
    using Call = std::function<bool(
        ResultMap& result, QString& error, QString url, HeaderMap headers, double timeoutMs)>;

    QByteArray name;
    QByteArray method;
    Call call;
};
Q_DECLARE_METATYPE(Runner)

/// Binds to \a function the arguments \a own that it takes between the headers and the time-out.
template <class Function, class... Own>
Runner runnerOf(const char* name, const char* method, Function function, const Own&... own)
{
    return {name, method,
        [=](ResultMap& result, QString& error, const QString& url, const HeaderMap& headers, double ms) {
            return function(result, error, url, headers, own..., ms);
        }};
}

inline Runner posting(const QByteArray& body)
{
    return runnerOf("httpPost", "POST", httpPost, body);
}

inline Runner putting(const QByteArray& body)
{
    return runnerOf("httpPut", "PUT", httpPut, body);
}

inline Runner postingForm(const ResultMap& fields, const QString& file = QString())
{
    return runnerOf("httpPostMultipart", "POST", httpPostMultipart, fields, file);
}

inline Runner puttingForm(const ResultMap& fields)
{
    return runnerOf("httpPutMultipart", "PUT", httpPutMultipart, fields);
}

/// The text of the result element becomes the reply's "soap".
inline Runner postingSoap(const QByteArray& body)
{
    return {"httpPostSoap", "POST", [body](auto& result, auto& error, auto url, auto headers, double ms) {
                QByteArray text;
                const bool ok = httpPostSoap(text, error, url, headers, body, ms);
                if (ok)
                    result = {{"soap", text}};
                return ok;
            }};
}

inline Runner downloading(const QString& savePath)
{
    return {"httpGetToFile", "GET", [savePath](auto& result, auto& error, auto url, auto headers, double ms) {
                return httpGetToFile(result, error, url, savePath, headers, ms);
            }};
}

inline QVector<Runner> allRunners(const QByteArray& body, const QString& savePath)
{
    return {{"httpGet", "GET", httpGet}, downloading(savePath), {"httpDelete", "DELETE", httpDelete},
        posting(body), putting(body), postingForm({{"a", "1"}}), puttingForm({{"a", "1"}}),
        postingSoap(body)};
}

/// The outcome of a call.
struct CallResult
{
    bool ok = false;
    QString error = QStringLiteral("an earlier text");
    ResultMap reply{{"earlier", true}};

    bool failedWith(const QString& text) const { return !ok && error == text && reply == CallResult().reply; }
};

/// Calls, by default with a time-out so long that a test that waits for it is stopped.
inline CallResult resultOf(const Runner& runner, const QString& url, const HeaderMap& headers = HeaderMap(),
    double timeoutMs = 100000)
{
    CallResult result;
    result.ok = runner.call(result.reply, result.error, url, headers, timeoutMs);
    return result;
}

/// The same, with a platform that answers by \a behave.
inline CallResult resultOf(const Runner& runner, const Behaviour& behave, double timeoutMs = 100000)
{
    ScriptedPeer peer;
    peer.expect(runner.method, "/", behave);
    return resultOf(runner, peer.address() + "/", {}, timeoutMs);
}

/// Bytes of which each eight contain their offset, for one of several versions of a file.
inline QByteArray pattern(int length, char version = 'a')
{
    QByteArray bytes(length, version);
    for (int at = 0; at + 8 < length; at += 8)
        qToBigEndian(quint32(at), bytes.data() + at);
    return bytes;
}

inline void write(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("The test cannot write its file.");
}

inline QByteArray read(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The same call on a thread that has never run an event loop.
inline CallResult inAnotherThread(const Runner& runner, const QString& url, double timeoutMs = 100000)
{
    CallResult result;
    QEventLoop loop;
    std::thread thread([&] {
        result = resultOf(runner, url, {}, timeoutMs);
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    thread.join();
    return result;
}
