// SPDX-License-Identifier: MIT
#include "Transfer.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>

bool exchangeByHand(const QString& url)
{
    QNetworkAccessManager manager;
    QNetworkReply* reply = manager.get(QNetworkRequest(QUrl(url)));
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    return !QJsonDocument::fromJson(reply->readAll()).object().toVariantMap().isEmpty();
}
