// SPDX-License-Identifier: MIT
#include "net/ReplyEnvelope.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

class TestReplyEnvelope : public QObject
{
    Q_OBJECT

private slots:
    void judges_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<bool>("good");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QString>("earlier");

        const auto row = [](const char* reply, bool good, const char* error,
                             const char* earlier = "earlier") {
            const QByteArray name = QByteArray(reply) + " after " + earlier;
            QTest::newRow(name) << QByteArray(reply) << good << QString::fromUtf8(error)
                                << QString::fromUtf8(earlier);
        };
        row(R"({})", true, "earlier");
        row(R"({"code":200,"msg":"m"})", true, "earlier");
        row(R"({"code":"200"})", true, "earlier");
        row(R"({"code":null,"status":200})", true, "earlier");
        row(R"({"code":401,"msg":"x"})", false, "网络错误:401(x)");
        row(R"({"code":403,"msg":"%2 %1"})", false, "网络错误:403(%2 %1)");
        row(R"({"code":404})", false, "网络错误:404()");
        row(R"({"code":402,"msg":"x"})", false, "x");
        row(R"({"code":500,"msg":"Token失效"})", false, "Token失效");
        row(R"({"code":500,"msg":"所选项目不存在","error":"E"})", false, "所选项目不存在");
        row(R"({"code":500,"msg":"","error":"E"})", false, "E");
        row(R"({"status":500,"error":"E"})", false, "E");
        row(R"({"status":404,"code":200,"msg":"m","error":"E"})", false, "m");
        row(R"({"code":1,"msg":"m"})", false, "m");
        row(R"({"code":1})", false, "");
        row(R"({"status":400,"code":0,"msg":"m"})", false, "earlier");
        row(R"({"status":401,"msg":"m"})", true, "earlier");
        row(R"({"code":-1,"msg":"m"})", false, "m");
        row(R"({"code":0})", false, "连接超时", "连接超时");
        row(R"({"code":1,"msg":"m"})", false, "返回值解析失败", "返回值解析失败");
    }

    void judges()
    {
        QFETCH(QByteArray, reply);
        QFETCH(QString, earlier);
        QString error = earlier;
        QTEST(checkReply(QJsonDocument::fromJson(reply).object().toVariantMap(), error), "good");
        QTEST(error, "error");
    }
};

QTEST_APPLESS_MAIN(TestReplyEnvelope)
#include "tst_replyenvelope.moc"
