// SPDX-License-Identifier: MIT
#include "cloud/CloudFileManger.h"
#include "core/ITreeElement.h"
#include "support/ScriptedPeer.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <memory>

namespace {
struct Releaser
{
    void operator()(ITreeElement* element) const { tav_tree_element_release_instance(element); }
};
using Tree = std::unique_ptr<ITreeElement, Releaser>;

/// The tree below \a element: a line each, indented, of name and attributes.
QStringList linesOf(const ITreeElement* element, int depth = 0)
{
    const auto attribute = [element](const char* key) {
        const char* value = element->properties().value(key);
        return value ? QString(" %1=%2").arg(key, QString::fromLocal8Bit(value)) : QString();
    };
    QStringList lines(QString(depth, ' ') + QString::fromLocal8Bit(element->name()) + " |" + attribute("type")
        + attribute("projectId") + attribute("fileId"));
    for (const ITreeElement* child = element->firstChild(); child; child = child->nextSibling())
        lines += linesOf(child, depth + 1);
    return lines;
}

/// One of the requests for the tree.
struct Request
{
    QByteArray target;
    QByteArray reply;
    int cause = -1; ///< the request without which this one is not sent
};

QByteArray sharesOf(const QByteArray& source)
{
    return "/project/cloudProjectShare/getProjectBySoftId?sourceClient=" + source + "&targetClient=Soft%201";
}

QByteArray filesOf(const QByteArray& project)
{
    return "/project/cloudProjectShare/getByProject?projectId=" + project + "&sourceClient=Soft%201";
}

enum
{
    Backups,
    FromB,
    FromA,
    FromSelf,
    FilesOf2,
    FilesOf3,
    FilesOf9
};

const QVector<Request> requests{
    {"/project/cloudProjectBackup/getProjectList?sourceClient=Soft%201",
        R"({"data":[{"id":"p2","sourceClient":"Soft 1","projectTitle":"Survey"},
                    {"id":"p1","sourceClient":"Soft 1"}]})"},
    {sharesOf("B"), R"({"code":0,"data":[]})"},
    {sharesOf("A"), R"({"data":[{"id":3,"sourceClient":"other","projectTitle":"Third"},
                                {"id":2,"sourceClient":"A","projectTitle":"第二"}]})"},
    {sharesOf("Soft%201"), R"({"data":[{"id":9,"sourceClient":"Soft 1","projectTitle":"Nine"}]})"},
    {filesOf("2"), R"({"data":[{"id":22,"originalName":"二.dwg"},{"id":21,"originalName":"a.dwg"}]})", FromA},
    {filesOf("3"), R"({"code":0,"data":[]})", FromA},
    {filesOf("9"), R"({"data":[{"id":91,"originalName":"a.dwg"}]})", FromSelf},
};

/// A line of the tree, and the requests that it depends on.
struct Line
{
    QString text;
    QVector<int> needs;
};

const QVector<Line> whole{
    {"My space | type=0", {}},
    {" My backup | type=0", {}},
    {"   | type=0", {Backups}},
    {"   .bak | type=1 projectId=p1", {Backups}},
    {"  Survey | type=0", {Backups}},
    {"   Survey.bak | type=1 projectId=p2", {Backups}},
    {" A | type=0", {FromA}},
    {"  第二 | type=0", {FromA}},
    {"   a.dwg | type=1 projectId=2 fileId=21", {FromA, FilesOf2}},
    {"   二.dwg | type=1 projectId=2 fileId=22", {FromA, FilesOf2}},
    {"  Third | type=0", {FromA}},
    {" B | type=0", {FromB}},
    {" Soft 1 | type=0", {FromSelf}},
    {"  Nine | type=0", {FromSelf}},
    {"   a.dwg | type=1 projectId=9 fileId=91", {FromSelf, FilesOf9}},
};

QStringList treeWithout(const QVector<int>& missing)
{
    QStringList lines;
    for (const Line& line : whole)
        if (std::none_of(missing.begin(), missing.end(), [&](int i) { return line.needs.contains(i); }))
            lines += line.text;
    return lines;
}

std::unique_ptr<CloudFileManger> clientOf(const QString& address, const QStringList& sources = {"B", "A"})
{
    return std::make_unique<CloudFileManger>(
        address, "token", "third", "Soft 1", sources, ".bak", "Project", QString());
}

constexpr int nothing = -1;
} // namespace

class TestCloudFileTree : public QObject
{
    Q_OBJECT

private slots:
    void survivesEachFailure()
    {
        for (int failing = 0; failing < requests.size(); ++failing) {
            for (const Behaviour& failure :
                {behaviour::answer(R"({"code":1,"msg":"no"})"), behaviour::answer("<html>", 502)}) {
                ScriptedPeer peer;
                const auto made = clientOf(peer.address());
                expectAll(peer, failing, failing, failure);
                QCOMPARE(linesOf(Tree(made->getFileTree()).get()), treeWithout({failing}));
                expectAll(peer, nothing, nothing, {});
                QCOMPARE(linesOf(Tree(made->getFileTree()).get()), treeWithout({}));
                // The projects that a source shared before are still known.
                const int missing = failing >= FromB && failing <= FromSelf ? nothing : failing;
                expectAll(peer, failing, missing, failure);
                QCOMPARE(linesOf(Tree(made->getFileTree()).get()), treeWithout({missing}));
            }
        }
    }

    void asksNoFurtherWhenThePlatformHangs()
    {
        ScriptedPeer peer;
        const auto made = clientOf(peer.address());
        peer.expect("GET", requests[Backups].target, behaviour::answer(R"({"code":1,"msg":"first"})"));
        for (const int listing : {FromB, FromA, FromSelf})
            peer.expect("GET", requests[listing].target, behaviour::answer(requests[listing].reply));
        peer.expect("GET", requests[FilesOf2].target, behaviour::silent());
        QTimer muchLater; // than the time-out
        muchLater.setSingleShot(true);
        muchLater.start(15000);
        const Tree tree(made->getFileTree());
        QVERIFY(muchLater.isActive());
        QCOMPARE(linesOf(tree.get()), treeWithout({Backups, FilesOf2, FilesOf9}));
        QCOMPARE(made->getLastError(), QString("first"));
        QCOMPARE(made->getLastFailure(), CloudFailure::Refused);
    }

    void asksForItsOwnSharesOnlyWithAName()
    {
        ScriptedPeer peer;
        CloudFileManger made(peer.address(), "token", "", "", {}, "", "", "");
        peer.expect(
            "GET", "/project/cloudProjectBackup/getProjectList?sourceClient=", behaviour::answer("{}"));
        const Tree tree(made.getFileTree());
        QCOMPARE(linesOf(tree.get()), QStringList({"My space | type=0", " My backup | type=0"}));
    }

    void namesAndIdsMayHoldAnything()
    {
        const QString text =
            "../../etc/a\\b/\r\n\x01\x1b[31m<b onclick=x>&amp;</b>%20%s%1测量 \xF0\x9F\x97\xBA עברית";
        const QPair<QString, QByteArray> ids[]{
            {"", ""},
            {"图 HTTP/1.1\r\nX: y\r\n", "%E5%9B%BE%20HTTP/1.1%0D%0AX:%20y%0D%0A"},
        };
        for (const auto& [id, query] : ids) {
            const QString name = text + QString(1 << 20, 'n') + QChar(0) + "b";
            const QString shown = QString(name).replace(QChar::Null, '/'); // which no file is called
            const Behaviour answer = behaviour::answer(QJsonDocument(
                QJsonObject{{"data",
                    QJsonArray{QJsonObject{{"id", id}, {"sourceClient", "S"}, {"projectTitle", name},
                        {"originalName", name}}}}}).toJson());
            ScriptedPeer peer;
            const auto made = clientOf(peer.address(), {});
            for (const QByteArray& target : {requests[Backups].target, sharesOf("Soft%201"), filesOf(query)})
                peer.expect("GET", target, answer);
            const Tree tree(made->getFileTree());
            const QStringList expected{"My space | type=0", " My backup | type=0", "  " + shown + " | type=0",
                "   " + shown + ".bak | type=1 projectId=" + id, " Soft 1 | type=0",
                "  " + shown + " | type=0", "   " + shown + " | type=1 projectId=" + id + " fileId=" + id};
            QVERIFY(linesOf(tree.get()) == expected);
        }
    }

    void theClientMayBeDestroyedMeanwhile()
    {
        for (int during = 0; during < requests.size(); ++during) {
            ScriptedPeer peer;
            auto made = clientOf(peer.address());
            expectAll(peer, during, nothing,
                behaviour::answerAfter(requests[during].reply, [&made] { made.reset(); }));
            const Tree tree(made->getFileTree());
            QVERIFY2(!made, requests[during].target);
            QCOMPARE(linesOf(tree.get()), treeWithout({}));
        }
    }

private:
    /// Expects the requests in their order, of which \a special is answered by \a otherwise. Those that
    /// depend on the request \a missing are not expected.
    static void expectAll(ScriptedPeer& peer, int special, int missing, const Behaviour& otherwise)
    {
        for (int i = 0; i < requests.size(); ++i)
            if (requests[i].cause == nothing || requests[i].cause != missing)
                peer.expect("GET", requests[i].target,
                    i == special ? otherwise : behaviour::answer(requests[i].reply));
    }
};

QTEST_GUILESS_MAIN(TestCloudFileTree)
#include "tst_cloudfiletree.moc"
