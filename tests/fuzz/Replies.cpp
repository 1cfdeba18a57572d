// SPDX-License-Identifier: MIT
// Stand-ins for the runners without a network: they only interpret bodies.
#include "Fuzz.h"

#include "net/HttpRunner.h"
#include "net/ReplyEnvelope.h"
#include "net/RequestLog.h"
#include "net/SoapReply.h"

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
JSON_RUNNER(httpGetToFile, QString, const HeaderMap&) // for the linker: nobody downloads

bool httpPostSoap(QByteArray& result, QString&, QString, const HeaderMap&, const QByteArray&, double)
{
    result = conversionResult(replies.takeFirst());
    return !result.isNull();
}
