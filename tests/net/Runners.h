// SPDX-License-Identifier: MIT
#pragma once

#include "net/HttpRunner.h"
#include "support/ScriptedPeer.h"

#include <QCoreApplication>
#include <QFile>
#include <QVector>
#include <QtEndian>

#include <atomic>
#include <functional>
#include <thread>

/// One of the eight request functions behind one shape, so that a row can be any of them.
struct Runner
{
    using Call = std::function<bool(
        ResultMap& result, QString& error, QString url, HeaderMap headers, double timeoutMs)>;

    QByteArray name;
    QByteArray method;
    Call call;
};
Q_DECLARE_METATYPE(Runner)

inline Runner posting(const QByteArray& body)
{
    return {"httpPost", "POST", [body](auto& result, auto& error, auto url, auto headers, double ms) {
                return httpPost(result, error, url, headers, body, ms);
            }};
}

inline Runner putting(const QByteArray& body)
{
    return {"httpPut", "PUT", [body](auto& result, auto& error, auto url, auto headers, double ms) {
                return httpPut(result, error, url, headers, body, ms);
            }};
}

inline Runner postingForm(const ResultMap& fields, const QString& file = QString())
{
    return {"httpPostMultipart", "POST",
        [fields, file](auto& result, auto& error, auto url, auto headers, double ms) {
            return httpPostMultipart(result, error, url, headers, fields, file, ms);
        }};
}

inline Runner puttingForm(const ResultMap& fields)
{
    return {
        "httpPutMultipart", "PUT", [fields](auto& result, auto& error, auto url, auto headers, double ms) {
            return httpPutMultipart(result, error, url, headers, fields, ms);
        }};
}

/// The result element's text is put under "soap".
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

/// What a call came to.
struct Outcome
{
    bool ok = false;
    QString error = QStringLiteral("an earlier text");
    ResultMap result{{"earlier", true}};

    bool failedWith(const QString& text) const { return !ok && error == text && result == Outcome().result; }
};

/// Calls with a time-out so long that a test which has to wait for it does not end in time.
inline Outcome outcomeOf(const Runner& runner, const QString& url, const HeaderMap& headers = HeaderMap(),
    double timeoutMs = 100000)
{
    Outcome outcome;
    outcome.ok = runner.call(outcome.result, outcome.error, url, headers, timeoutMs);
    return outcome;
}

/// Bytes of which each eight tell where they stand, in one of several versions of a file.
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

/// Once the request is there, runs \a meanwhile in the thread that waits for its answer, in which the
/// application object lives; answers with \a body after that, unless it is null.
inline Behaviour answerAfter(const QByteArray& body, const std::function<void()>& meanwhile)
{
    return [=](PeerConnection& c) {
        if (!c.readHead() || !c.readBody())
            return;
        QMetaObject::invokeMethod(QCoreApplication::instance(), meanwhile, Qt::BlockingQueuedConnection);
        if (!body.isNull())
            c.send(behaviour::response(body));
    };
}

/// The same call on a thread that has never run an event loop.
inline Outcome inAnotherThread(const Runner& runner, const QString& url, double timeoutMs = 100000)
{
    Outcome outcome;
    std::atomic<bool> done{false};
    std::thread thread([&] {
        outcome = outcomeOf(runner, url, {}, timeoutMs);
        done = true;
    });
    while (!done)
        QCoreApplication::processEvents();
    thread.join();
    return outcome;
}
