// SPDX-License-Identifier: MIT
#include "Soap.h"

#include <QXmlStreamReader>

QByteArray request(const QByteArray& operation, const QByteArray& base64)
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<soap:Envelope xmlns:soap = "
           "\"http://schemas.xmlsoap.org/soap/envelope/\">\n<soap:Body>\n<"
        + operation + " xmlns=\"http://tempuri.org/\">\n<file>" + base64 + "</file>\n</" + operation
        + ">\n</soap:Body>\n</soap:Envelope>";
}

QString elementText(const QByteArray& xml, const QString& name)
{
    QXmlStreamReader reader(xml);
    QString text;
    while (!reader.atEnd())
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == name && text.isNull())
            text = reader.readElementText();
    return reader.hasError() ? QString() : text;
}

Answer convert(const Client& client, const QByteArray& operation, const QByteArray& request)
{
    return client.post("/NrvConRnx.asmx", request, "text/xml; charset=utf-8",
        {{"SOAPAction", "http://tempuri.org/" + operation}});
}
