// SPDX-License-Identifier: MIT
// Stand-ins for the runners without a network: they only interpret bodies.
#include "Fuzz.h"

#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"
#include "net/RequestLog.h"

#include <QNetworkReply>

#include <cstring>

#include <sanitizer/lsan_interface.h>

using namespace tav;

Q_LOGGING_CATEGORY(tav::cloudLog, "tav.cloud", QtFatalMsg)

CloudFailure lastTransportFailure()
{
    return replies.isEmpty() ? CloudFailure::TimedOut : CloudFailure::Unusable;
}

static bool takeReply(ResultMap& result)
{
    // Qt 5.15 loses the lists and objects whose name comes twice in an object.
    const __lsan::ScopedDisabler unseen;
    return !replies.isEmpty() && readReply(replies.takeFirst(), result);
}

#define JSON_RUNNER(name, ...)                                                                               \
    bool name(ResultMap& result, QString&, QString, __VA_ARGS__, double)                                     \
    {                                                                                                        \
        return takeReply(result);                                                                            \
    }
JSON_RUNNER(httpGet, const HeaderMap&)
JSON_RUNNER(httpDelete, const HeaderMap&)
JSON_RUNNER(httpPost, const HeaderMap&, const QByteArray&)
JSON_RUNNER(httpPostMultipart, const HeaderMap&, const QMap<QString, QVariant>&, QString)

namespace {

/// A reply that is there as a whole.
class WholeReply : public QNetworkReply
{
public:
    explicit WholeReply(const QByteArray& body)
        : bytes(body)
    {
        open(ReadOnly | Unbuffered);
        setAttribute(QNetworkRequest::HttpStatusCodeAttribute, 200);
    }
    void abort() override { }
    qint64 bytesAvailable() const override { return bytes.size(); }

protected:
    qint64 readData(char* data, qint64 maxSize) override
    {
        const int count = int(qMin<qint64>(maxSize, bytes.size()));
        memcpy(data, bytes.constData(), size_t(count));
        bytes.remove(0, count);
        return count;
    }

private:
    QByteArray bytes;
};

} // namespace

namespace tav {

// An exchange without a network: it ends in what its reader makes of the next reply.
HttpExchange::HttpExchange(HttpRequest what, QObject*)
    : request(std::move(what))
{
}
HttpExchange::~HttpExchange() = default;
bool HttpExchange::start()
{
    return true;
}
void HttpExchange::cancel() { }

void HttpExchange::conclude()
{
    const __lsan::ScopedDisabler unseen;
    ended = CloudFailure::TimedOut;
    if (replies.isEmpty())
        return;
    WholeReply whole(replies.takeFirst());
    request.reader->take(whole);
    ended = request.reader->judge(whole);
}

QString HttpExchange::errorText() const
{
    return failure() == CloudFailure::None ? QString() : replyUnusable();
}

bool runToEnd(HttpExchange& exchange, QString&, BusyDialog)
{
    exchange.conclude();
    return exchange.failure() == CloudFailure::None;
}

} // namespace tav
