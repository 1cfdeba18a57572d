// SPDX-License-Identifier: MIT
// Backups of the desktop host, which run while the drafter goes on.
#include "MainWindow.h"
#include "support/DialogFixture.h"
#include "support/Robot.h"

#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QFile>
#include <QStatusBar>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>

class TestDesktopHost : public DialogTest
{
    Q_OBJECT

private slots:
    void backsUpWhileTheUserGoesOn()
    {
        Host host(*this);
        host.begins(nullptr); // no answer
        QVERIFY(!host.action("Ctrl+B")->isEnabled());
        for (const char* other : {"Ctrl+M", "Ctrl+T", "Ctrl+Shift+L"})
            QVERIFY2(host.action(other)->isEnabled(), other);
        // Asked before it closes on it.
        fixture->boxes().expect(
            question("Drawings are still being backed up. Give that up and close?", false));
        QVERIFY(!host.window.close());
        QVERIFY(host.window.isVisible() && !host.action("Ctrl+B")->isEnabled());

        auto* cancel = host.window.statusBar()->findChild<QToolButton*>();
        QVERIFY(robot::waitUntil([&] { return cancel->isVisible(); }));
        robot::click(*cancel);
        QVERIFY(robot::waitUntil([&] { return host.action("Ctrl+B")->isEnabled(); }));
        QCOMPARE(host.backedUp(), QString());

        // The project is this window's own now: it is not asked about again.
        fixture->expect(
            "GET", listed, R"({"code":0,"data":[{"id":"5","projectTitle":"a.dgn","sourceClient":"D"}]})");
        host.uploads(nullptr);
        fixture->boxes().expect(
            question("Drawings are still being backed up. Give that up and close?", true));
        QVERIFY(host.window.close());
    }

    void tellsHowABackupEnded_data()
    {
        QTest::addColumn<QByteArray>("reply");
        QTest::addColumn<bool>("changes");
        QTest::addColumn<QString>("problem"); ///< null: it is backed up
        QTest::newRow("done") << QByteArray(R"({"code":0})") << false << QString();
        QTest::newRow("refused") << QByteArray(R"({"code":1,"msg":"<b>full</b>"})") << false
                                 << QString("<b>full</b>");
        QTest::newRow("changed meanwhile") << QByteArray(
            R"({"code":0})") << true << QString("It changed while it was being backed up. Back it up again.");
    }

    void tellsHowABackupEnded()
    {
        QFETCH(const QByteArray, reply);
        QFETCH(const bool, changes);
        QFETCH(const QString, problem);
        Host host(*this);
        bool told = problem.isNull();
        if (!told)
            fixture->boxes().expect(
                {QMessageBox::Critical, "Drawings", "a.dgn was not backed up.\n\n" + problem, QMessageBox::Ok,
                    QMessageBox::Ok, [&] { told = true; }});
        host.begins(reply, [&] {
            QFile file("a.dgn");
            QVERIFY(!changes
                || (file.open(QIODevice::ReadWrite)
                    && file.setFileTime(
                        QDateTime(QDate(2001, 1, 1), QTime(1, 1)), QFileDevice::FileModificationTime)));
        });
        QVERIFY(robot::waitUntil([&] { return host.action("Ctrl+B")->isEnabled() && told; }));
        QCOMPARE(host.backedUp().isEmpty(), !problem.isNull());
    }

private:
    const QByteArray listed = "/project/cloudProjectBackup/getProjectList?sourceClient=DesktopHost";

    static ExpectedBox question(const QString& text, bool yes)
    {
        return {QMessageBox::Question, "Drawings", text, QMessageBox::Yes | QMessageBox::No,
            yes ? QMessageBox::Yes : QMessageBox::No};
    }

    /// The main window with the drawing a.dgn, and somebody signed in.
    struct Host
    {
        explicit Host(TestDesktopHost& owner)
            : test(owner)
        {
            test.fixture->expect("POST", "/auth/oauth/token?grant_type=password",
                R"({"code":0,"access_token":"A","refresh_token":"R","user_info":{"username":"u"}})");
            QVERIFY(CloudAccountLogin::instance()->userLoginAccount("u", "p"));
            QFile file("a.dgn");
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("drawing") > 0);
            file.close();
            window.addDrawings({"a.dgn"});
            window.show();
        }

        /// Begins a first backup, whose upload is answered with \a reply.
        void begins(
            const QByteArray& reply, const std::function<void()>& meanwhile = [] {})
        {
            test.fixture->expect("GET", test.listed, R"({"code":0,"data":[]})");
            test.fixture->expect("POST", "/project/cloudProjectInfo/add", R"({"code":0,"data":5})");
            uploads(reply, meanwhile);
        }
        void uploads(
            const QByteArray& reply, const std::function<void()>& meanwhile = [] {})
        {
            bool came = false;
            test.fixture->expect("POST", "/project/cloudProjectBackup/upload", reply, [&] {
                meanwhile();
                came = true;
            });
            action("Ctrl+B")->trigger();
            QVERIFY(robot::waitUntil([&] { return came; }));
        }
        QAction* action(const QString& shortcut) const
        {
            for (QAction* one : window.findChildren<QAction*>()) {
                if (one->shortcut() == QKeySequence(shortcut))
                    return one;
            }
            return nullptr;
        }
        QString backedUp() const { return window.findChild<QTreeWidget*>()->topLevelItem(0)->text(2); }

        TestDesktopHost& test;
        MainWindow window;
    };
};

QTEST_MAIN(TestDesktopHost)
#include "tst_desktophost.moc"
