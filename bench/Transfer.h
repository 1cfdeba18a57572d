// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

#include <curl/curl.h>

/// The base address of the far end that main() started.
QString peerAddress();

/// One GET of a JSON object as it is written by hand on a bare QNetworkAccessManager.
bool exchangeByHand(const QString& url);

/// An exchange by libcurl with \a url, set up and run by \a perform.
template <typename Perform>
bool performWithCurl(const QString& url, const Perform& perform)
{
    CURL* curl = curl_easy_init();
    const QByteArray text = url.toUtf8();
    curl_easy_setopt(curl, CURLOPT_URL, text.constData());
    curl_easy_setopt(curl, CURLOPT_PROXY, "");
    const bool good = perform(curl);
    curl_easy_cleanup(curl);
    return good;
}
