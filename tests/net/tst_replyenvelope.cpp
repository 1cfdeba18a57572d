// SPDX-License-Identifier: MIT
#include "net/ReplyEnvelope.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

class TestReplyEnvelope : public QObject
{
    Q_OBJECT

private slots:
    void judgesByCodeAndStatus()
    {
        const struct
        {
            QByteArray reply;
            bool good;
            QString error;
            QString earlier = "earlier";
        } replies[]{
            {"{}", true, "earlier"},
            {R"({"code":"200","msg":"m"})", true, "earlier"},
            {R"({"code":null,"status":200})", true, "earlier"},
            {R"({"code":401,"msg":"x"})", false, "网络错误:401(x)"},
            {R"({"code":403,"msg":"%2 %1"})", false, "网络错误:403(%2 %1)"},
            {R"({"code":404})", false, "网络错误:404()"},
            {R"({"code":402,"msg":"x"})", false, "x"},
            {R"({"code":500,"msg":"Token失效"})", false, "Token失效"},
            {R"({"code":500,"msg":"所选项目不存在","error":"E"})", false, "所选项目不存在"},
            {R"({"code":500,"msg":"","error":"E"})", false, "E"},
            {R"({"status":500,"error":"E"})", false, "E"},
            {R"({"status":404,"code":200,"msg":"m","error":"E"})", false, "m"},
            {R"({"code":1})", false, ""},
            {R"({"status":400,"code":0,"msg":"m"})", false, "earlier"},
            {R"({"status":401,"msg":"m"})", true, "earlier"},
            {R"({"code":0})", false, "连接超时", "连接超时"},
            {R"({"code":1,"msg":"m"})", false, "返回值解析失败", "返回值解析失败"},
        };
        for (const auto& [reply, good, expected, earlier] : replies) {
            QString error = earlier;
            QVERIFY2(
                checkReply(QJsonDocument::fromJson(reply).object().toVariantMap(), error) == good, reply);
            QCOMPARE(reply + error.toUtf8(), reply + expected.toUtf8());
        }
    }
};

QTEST_APPLESS_MAIN(TestReplyEnvelope)
#include "tst_replyenvelope.moc"
