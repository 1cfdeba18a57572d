// SPDX-License-Identifier: MIT
#include "net/SoapReply.h"

#include <algorithm>
#include <cctype>

namespace tav {

/// Works on bytes and without a parser: the text may be a hundred megabytes, and the service's element is
/// known.
QByteArray conversionResult(QByteArray body)
{
    for (const QByteArray& name :
        {QByteArrayLiteral("ConDgn2DwgResult"), QByteArrayLiteral("ConDwg2DgnResult")}) {
        const auto opening = body.indexOf(name);
        if (opening < 0)
            continue;
        auto begin = opening + name.size();
        // From the next tag on: over a long text, one byte is found faster than a name.
        const auto closing = body.indexOf(name, std::max(begin, body.indexOf('<', begin)));
        if (closing < 0)
            return QByteArray();

        // Between the names stand the end of the opening tag, the text and "</"; either tag may carry more,
        // an attribute or a namespace prefix.
        auto end = body.lastIndexOf("</", closing - 1);
        if (end < begin)
            end = closing - 2;
        if (begin < end && std::isspace(static_cast<unsigned char>(body[begin]))) {
            begin = body.indexOf('>', begin);
            if (begin < 0 || begin >= end)
                return QByteArray();
        }
        ++begin;
        body.truncate(std::max(begin, end));
        return body.remove(0, begin);
    }
    return QByteArray();
}

} // namespace tav
