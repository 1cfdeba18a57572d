// SPDX-License-Identifier: MIT
#include "MultipartForm.h"

QVector<FormPart> parseForm(const RecordedRequest& request, QString& fault)
{
    const QByteArray type = request.header("Content-Type");
    const QByteArray prefix = "multipart/form-data; boundary=";
    QByteArray boundary = type.mid(prefix.size());
    if (boundary.startsWith('"') && boundary.endsWith('"'))
        boundary = boundary.mid(1).chopped(1);
    if (!type.startsWith(prefix) || boundary.isEmpty()) {
        fault = QStringLiteral("no form: ") + QString::fromUtf8(type);
        return {};
    }
    boundary.prepend("--");
    const QByteArray between = "\r\n" + boundary;
    QVector<FormPart> parts;
    int at = boundary.size();
    if (!request.body.startsWith(boundary))
        fault = QStringLiteral("the body does not begin with the boundary");
    while (fault.isEmpty() && request.body.mid(at, 2) == "\r\n") {
        const int bodyStart = request.body.indexOf("\r\n\r\n", at);
        const int end = bodyStart < 0 ? -1 : request.body.indexOf(between, bodyStart + 2);
        if (end < bodyStart + 4) {
            fault = QStringLiteral("part %1 has no end").arg(parts.size());
            return parts;
        }
        parts.append({request.body.mid(at + 2, bodyStart - at - 2),
            request.body.mid(bodyStart + 4, end - bodyStart - 4)});
        at = end + between.size();
    }
    if (fault.isEmpty() && request.body.mid(at) != "--\r\n" && request.body.mid(at) != "--")
        fault = QStringLiteral("the body does not end with the closing boundary");
    return parts;
}

QByteArray fieldHead(const QByteArray& name)
{
    return "Content-Disposition: form-data; name=\"" + name + '"';
}

QByteArray fileHead(const QByteArray& fileName)
{
    return fieldHead("file") + "; filename=\"" + fileName + '"';
}

QByteArray contentOf(const RecordedRequest& request)
{
    QString fault;
    QByteArray content;
    for (const FormPart& one : parseForm(request, fault))
        content += one.head + '=' + one.body + '\n';
    return fault.isEmpty() ? content : request.header("Content-Type") + request.body;
}

QByteArray part(const QByteArray& name, const QByteArray& value)
{
    return fieldHead(name) + '=' + value + '\n';
}

QByteArray filePart(const QByteArray& fileName, const QByteArray& bytes)
{
    return fileHead(fileName) + '=' + bytes + '\n';
}
