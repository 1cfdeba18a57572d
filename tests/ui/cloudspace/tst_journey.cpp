// SPDX-License-Identifier: MIT
#include "CloudSpaceFixture.h"
#include "Rows.h"

#include "PlatformUnderTest.h"
#include "ui/cloudspace/DlgMyCloudSpace.h"
#include "ui/cloudspace/TavFileButton.h"

#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

namespace {

const QString project = QString::fromUtf8("Bridge (桥)");
const QString groupName = "Site-(office)";

/// A user at the window of the cloud space, signed in on the platform.
struct Drafter
{
    Drafter(const PlatformUnderTest& platform, const QByteArray& name)
        : client(QStringLiteral("http://127.0.0.1:%1").arg(platform.port()),
            platform.signedIn(name).authorization().mid(int(qstrlen("Bearer "))), QString(), "Soft", {"Soft"},
            ".bak", QString(), QString())
        , window(&client, {{"dwg", "1"}}, name, QString(), nullptr)
    {
    }

    CloudFileManger client;
    DlgMyCloudSpace window;
};

/// By their names.
QMap<QString, const TavFileButton*> tilesOf(const QWidget& window)
{
    QMap<QString, const TavFileButton*> tiles;
    for (const TavFileButton* tile : window.findChildren<TavFileButton*>())
        if (tile->isVisible())
            tiles.insert(tile->getName(), tile);
    return tiles;
}

void clickTile(const QWidget& window, const QString& name)
{
    QTRY_VERIFY2(tilesOf(window).contains(name), qPrintable(name)); // they are laid out later
    QTest::mouseClick(tilesOf(window).value(name)->findChild<QPushButton*>(), Qt::LeftButton);
}

} // namespace

/// Two drafters in the cloud space, on the real local platform. Each step goes on where the last one ended.
class TestJourney : public CloudSpaceTest
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        platform = std::make_unique<PlatformUnderTest>();
        CloudSpaceTest::initTestCase();
        alice = std::make_unique<Drafter>(*platform, "alice");
        bob = std::make_unique<Drafter>(*platform, "bob");
    }
    void cleanupTestCase()
    {
        alice.reset();
        bob.reset();
        CloudSpaceTest::cleanupTestCase();
        QCOMPARE(platform->stop(), 0);
    }
    void init()
    {
        CloudSpaceTest::init();
        QVERIFY2(std::exchange(whole, false), "The step before did not end as it should.");
    }
    void cleanup()
    {
        CloudSpaceTest::cleanup();
        whole = !QTest::currentTestFailed();
    }

    void aliceSharesByCode()
    {
        turnTo(*alice, "Anonymous share");
        type(alice->window, "File", newDrawing("by code.dwg"));
        fixture->whenOpened("Choose Cloud Project", [this](QDialog& chooser) {
            whenForm(
                "Add cloud Project", {{"Cloud Project Name", project}, {"Cloud Project Description", "D"}});
            readBoxes({"Prompt", "Anonymous share", "Prompt"});
            press(chooser, "Add");
            press(chooser, "OK");
        });
        press(alice->window, "Share");
        QCOMPARE(read,
            "Add cloud project successfully!\nFetch Code:" + copied()
                + "\nThe fetch code is copied to the clipboard.\n"
                  "Please go to my Cloud space to view the uploaded file.\n");
    }

    void bobExtractsByCode()
    {
        turnTo(*bob, "Anonymous share");
        press(bob->window, "Paste");
        fixture->boxes().expectPrompt(
            "Extraction successfully! Please go to My Cloud space to view the file");
        press(bob->window, "Extract");
        bobHas({"by code.dwg"});
    }

    void aliceSharesWithHerFriend()
    {
        turnTo(*alice, "Share To friends");
        type(alice->window, "File", newDrawing("for bob.dwg"));
        fixture->whenOpened("Address book Management", [this](QDialog& friends) {
            whenForm("Add", {{"Name", "Bob"}, {"Company", "Beams"}, {"Account", "13800000002"}});
            press(friends, "Add");
            clickRow(friends, "13800000002");
            whenForm("Change", {{"Name", "B."}});
            press(friends, "Edit");
            QCOMPARE(rowsOf(friends), QStringList("B. | 13800000002 | Beams"));
        });
        press(alice->window, "Address book Management");
        shareWith("bob");
        bobHas({"by code.dwg", "for bob.dwg"});
    }

    void bobJoinsAlicesGroup()
    {
        turnTo(*alice, "Share To groups");
        fixture->whenOpened("Group management", [this](QDialog& groups) {
            whenForm("Create a group", {{"Group Name", groupName}});
            readBoxes({"Prompt", "Anonymous share"});
            press(groups, "Create group");
            group = rowsOf(groups).value(1);
            clickRow(groups, group.trimmed());
            press(groups, "Generating invitation codes");
        });
        press(alice->window, "Group management");
        turnTo(*bob, "Share To groups");
        fixture->whenOpened("Group management", [this](QDialog& groups) {
            whenForm("Join group by invitation code", {{"Invitation code", copied()}});
            readBoxes({"Prompt"});
            press(groups, "Join the group");
            QCOMPARE(
                rowsOf(groups), QStringList({"My groups", group, "    alice - group manager", "    bob"}));
        });
        press(bob->window, "Group management");
        QVERIFY(read.endsWith("Create group successfully!\nInvitation code:" + copied()
            + "\nThe invitation code is copied to the clipboard.\nJoin the group successfully!\n"));
    }

    void aliceSharesWithTheGroupAndDeletesIt()
    {
        turnTo(*alice, "Share To groups");
        type(alice->window, "File", newDrawing("for the group.dwg"));
        shareWith(groupName);
        bobHas({"by code.dwg", "for bob.dwg", "for the group.dwg"});
        turnTo(*alice, "Share To groups");
        fixture->boxes().expect({QMessageBox::Question, "Prompt", "Do you want to delete this group?",
            QMessageBox::Ok | QMessageBox::Cancel});
        fixture->boxes().expectPrompt("Delete successfully!");
        fixture->whenOpened("Group management", [this](QDialog& groups) {
            clickRow(groups, "bob");
            press(groups, "Removing a group member");
            QCOMPARE(rowsOf(groups), QStringList({"My groups", group, "    alice - group manager"}));
            clickRow(groups, group.trimmed());
            press(groups, "Delete the group");
            QCOMPARE(rowsOf(groups), QStringList("My groups"));
        });
        press(alice->window, "Group management");
        bobHas({"by code.dwg", "for bob.dwg"});
    }

private:
    /// To a mode of the share tab, or else to the files. Windows of the host are modal: only one is open.
    void turnTo(Drafter& drafter, const QString& mode = QString())
    {
        alice->window.hide();
        bob->window.hide();
        bringUp(drafter.window);
        drafter.window.findChild<QTabWidget*>()->setCurrentIndex(mode.isEmpty() ? 0 : 1);
        for (QRadioButton* one : drafter.window.findChildren<QRadioButton*>())
            if (one->text() == mode)
                QTest::mouseClick(one, Qt::LeftButton, {}, one->rect().center());
    }

    /// A file of that name with bytes of its own; its path.
    QString newDrawing(const QString& name)
    {
        drawings.insert(name, (name.toUtf8() + QByteArray("\r\n\0\xff--", 6)).repeated(1000));
        QFile file(files.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(drawings[name]) < 0)
            qFatal("Cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    /// Reads and closes the boxes of a step, whose texts the script cannot foretell.
    void readBoxes(const QStringList& titles)
    {
        fixture->boxes().finish();
        for (const QString& title : titles)
            fixture->whenOpened(title, [this](QDialog& dialog) {
                const auto* box = qobject_cast<QMessageBox*>(&dialog);
                read += (box && box->icon() == QMessageBox::Information ? box->text() : "not this") + '\n';
            });
    }

    void whenForm(const QString& title, const Texts& texts)
    {
        fixture->whenOpened(title, [texts](QDialog& form) {
            fillIn(form, texts);
            QTest::keyClick(form.focusWidget(), Qt::Key_Return);
        });
    }

    static QString copied() { return QApplication::clipboard()->text(); }

    void shareWith(const QString& whom)
    {
        clickRow(alice->window, whom);
        fixture->whenOpened("Choose Cloud Project", [](QDialog& chooser) {
            clickRow(chooser, project);
            press(chooser, "OK");
        });
        fixture->boxes().expectPrompt("Share successfully!");
        press(alice->window, "Share");
    }

    /// Bob finds these, and no others, and downloads the last.
    void bobHas(const QStringList& names)
    {
        turnTo(*bob);
        press(bob->window, "Refresh");
        for (const QString& folder : {QString("Soft"), project})
            for (int click = 0; click < 2; ++click)
                clickTile(bob->window, folder);
        QTRY_COMPARE(tilesOf(bob->window).keys(), names);
        const QTemporaryDir target;
        clickTile(bob->window, names.last());
        fixture->whenAsked("Save path", target.path());
        fixture->boxes().expectPrompt("The download is complete!");
        press(bob->window, "Download");
        QFile file(target.filePath(names.last()));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), drawings.value(names.last()));
    }

    std::unique_ptr<PlatformUnderTest> platform;
    std::unique_ptr<Drafter> alice, bob;
    const QTemporaryDir files;
    QMap<QString, QByteArray> drawings; ///< their bytes
    QString read, group; ///< the boxes; the group's row in the tree
    bool whole = true;
};

QTEST_MAIN(TestJourney)
#include "tst_journey.moc"
