// SPDX-License-Identifier: MIT
#include "support/CloudSpaceFixture.h"
#include "support/DialogFlows.h"

#include "ui/WindowNote.h"
#include "ui/cloudspace/CloudShareTabWidget.h"
#include "ui/cloudspace/TileArea.h"

#include <QDirIterator>
#include <QGridLayout>
#include <QLabel>
#include <QProgressBar>
#include <QProgressDialog>
#include <QScrollBar>
#include <QSignalSpy>

using namespace tav;

namespace {

/// A folder with \a count files in it.
Cloud wide(int count)
{
    QString project = "1=P";
    for (int i = 0; i < count; ++i)
        project += QString("|%1=f%2").arg(1000 + i).arg(i);
    return {{project}};
}

const Cloud one{{"1=P|11=a.dwg"}};
const Cloud nested{{"1=a|11=x.dwg|12=x.dwg|13=y.dwg", "2=<b>b"}};

void click(const TavFileButton* tile)
{
    robot::click(*tile->focusProxy());
}

/// Presses a key in \a target.
void hit(QWidget* target, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    target->setFocus();
    robot::key(*target, key, modifiers);
}

/// The path of the folder that is shown, and the names of its tiles.
QString view(const QWidget& window)
{
    QStringList names;
    for (const TavFileButton* tile : tilesOf(window))
        names.append(tile->getName());
    return field(window, "Folder")->text() + ": " + names.join(' ');
}

bool isSelected(const TavFileButton* tile, bool expected = true)
{
    return tile->selected == expected
        && tile->styleSheet() == (expected ? "background-color:#00ffff;" : "background-color:#ffffff;");
}

bool isInView(const QWidget& window, const TavFileButton* tile)
{
    const QRect view = window.findChild<TileArea*>()->viewport()->geometry();
    return tile->isVisible() && view.contains(tile->geometry());
}

QString noteOn(const QWidget& window)
{
    const auto* note = window.findChild<WindowNote*>();
    return note && note->isVisible() ? note->text() : QString();
}

using Contents = QMap<QString, QByteArray>;

/// All files of the working directory.
Contents filesHere()
{
    Contents contents;
    QDirIterator files(".", QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        file.open(QIODevice::ReadOnly);
        contents[file.fileName().mid(2)] = file.readAll();
    }
    return contents;
}

/// A download of one tile into the folder "out".
struct Download
{
    const char* row;
    Cloud cloud;
    QString chosen; ///< with the folders on the way to it
    Steps steps; ///< after the directory is chosen, without the last box
    Contents after; ///< the files afterwards
    QString missed = {}; ///< what the note says was not downloaded; empty if nothing
    QStringList before = {}; ///< old files
    bool hasDirectory = true; ///< whether the user chose one
};

const auto backs = [](Text id, Bytes bytes) {
    return get("/project/cloudProjectBackup/downloadProject?projectId=" + id, bytes);
};
const QString unusable = "The connection was cut, or the answer was not the platform's. Try again.";
const QByteArray binary("\0\r\n\xff", 4);

const QVector<Download> downloads{
    {"a folder of folders", {{"1=P|11=a.dwg|12=二.dwg", "2=empty", "3=Q|31=a.dwg"}}, "Soft",
        brings("11", "one") + brings("12", binary) + brings("31", "three"),
        {{"out/Soft/P/a.dwg", "one"}, {"out/Soft/P/二.dwg", binary}, {"out/Soft/Q/a.dwg", "three"}}},
    {"backups", {{}, {"5=Survey", "6=T"}}, "My backup", backs("5", "five") + backs("6", binary),
        {{"out/My backup/Survey/Survey.bak", "five"}, {"out/My backup/T/T.bak", binary}}},
    {"its own id, not its project's", one, "Soft/P/a.dwg", asksToCover("a.dwg", yes) + brings("11", "new"),
        {{"out/a.dwg", "new"}}, {}, {"out/a.dwg"}},
    {"of two of one name the one that is selected", nested, "Soft/a/x.dwg", brings("12", "second"),
        {{"out/x.dwg", "second"}}},
    {"two of one name", nested, "Soft/a",
        brings("11", "first") + asksToCover("a/x.dwg (2 of 2, ID 12)", no) + brings("13", "y"),
        {{"out/a/x.dwg", "first"}, {"out/a/y.dwg", "y"}}, "a/x.dwg (2 of 2, ID 12). "},
    {"no id at all", {{"=P|=a.dwg"}}, "Soft/P/a.dwg", {}, {}, "a.dwg. "},
    {"one is kept, one fails, one is covered", {{"1=P|11=a.dwg|12=%1 <i>.dwg|13=c.dwg"}}, "Soft/P",
        asksToCover("P/a.dwg", no) + asksToCover("P/%1 <i>.dwg", yes) + brings("12", "")
            + asksToCover("P/c.dwg", yes) + brings("13", "new"),
        {{"out/P/a.dwg", "old"}, {"out/P/%1 <i>.dwg", "old"}, {"out/P/c.dwg", "new"}},
        "P/a.dwg, P/%1 <i>.dwg. " + unusable, {"out/P/a.dwg", "out/P/%1 <i>.dwg", "out/P/c.dwg"}},
    {"no directory is the root", {{"1=P|11=nowhere to be written.dwg"}}, "Soft/P/nowhere to be written.dwg",
        brings("11", ""), {}, "nowhere to be written.dwg. " + unusable, {}, false},
    {"hostile names",
        {{"1=P|11=..|12=../a|13=a\\\\b|14=C:x|15=|16=.|17=/tmp/a|18=...", "2=..|21=a", "3=../up|31=a",
            "4=|41=a", "5=d:|51=a"}},
        "Soft", brings("18", "harmless"), {{"out/Soft/P/...", "harmless"}},
        "Soft/P/.., Soft/P/../a, Soft/P/a\\b, Soft/P/C:x, Soft/P/, ... (11). "
        "Its name in the cloud cannot be the name of a file."},
};

} // namespace

class TestCloudSpace : public CloudSpaceTest
{
    Q_OBJECT

private slots:
    void aTileIsSelectedAndThenOpened()
    {
        const QStringList pictures{"folder.png", "file.png", "file.png"};
        for (int kind = 0; kind < pictures.size(); ++kind) {
            TavFileButton tile("<b>n</b>", kind, nullptr);
            QSignalSpy selected(&tile, &TavFileButton::iselected);
            QSignalSpy clicked(&tile, &TavFileButton::iclicked);
            tile.show();
            const QIcon picture(":/tav_cloud_platform_sdk/Resources/" + pictures[kind]);
            const QIcon icon = tile.findChild<QPushButton*>()->icon();
            QCOMPARE(icon.pixmap(70, 90).toImage(), picture.pixmap(70, 90).toImage());
            QTest::mouseDClick(tile.focusProxy(), Qt::RightButton);
            QVERIFY(!tile.selected);
            for (int i = 0; i < 3; ++i) {
                click(&tile);
                QVERIFY(isSelected(&tile) && selected.size() == 1 && clicked.size() == i);
            }
            QCOMPARE(selected[0] + clicked[0], QVariantList({"<b>n</b>", "<b>n</b>"}));
        }
    }

    void aRefreshByTheShareTabIsShown()
    {
        const auto dialog = open(nested, "Soft/");
        QCOMPARE(dialog->windowTitle(), QString("Cloud space"));
        QVector<int> sizes;
        for (int i = 0; i < 3; ++i) {
            fixture->expect(treeOf(one));
            emit dialog->findChild<CloudShareTabWidget*>()->refreshMyCloudSpace();
            QCOMPARE(view(*dialog), QString("My space\\: My backup Soft"));
            sizes.append(dialog->findChildren<QObject*>().size());
        }
        QCOMPARE(sizes[2], sizes[1]); // nothing of the earlier trees is left
        goes("Soft/")(*dialog);
        QCOMPARE(view(*dialog), QString("My space\\Soft\\: P"));
    }

    void foldersOpenAndClose()
    {
        const auto dialog = open(nested);
        const QVector<QStringList> steps{{"back", "My space\\: My backup Soft"},
            {"Soft", "My space\\Soft\\: a <b>b"}, {"<b>b", "My space\\Soft\\<b>b\\: "},
            {"back", "My space\\Soft\\: a <b>b"}, {"a", "My space\\Soft\\a\\: x.dwg x.dwg y.dwg"},
            {"y.dwg", "My space\\Soft\\a\\: x.dwg x.dwg y.dwg"}};
        for (const QStringList& step : steps) {
            if (step[0] == "back")
                hit(dialog->focusWidget(), Qt::Key_Left, Qt::AltModifier);
            else
                goes(step[0] + '/')(*dialog);
            QCOMPARE(view(*dialog), step[1]);
            QCOMPARE(button(*dialog, "back")->isEnabled(), step[1].count('\\') > 1);
            QCOMPARE(button(*dialog, "Download")->isEnabled(), step[0] == "y.dwg");
        }
        const QList<TavFileButton*> tiles = tilesOf(*dialog);
        QVERIFY(isSelected(tiles[0], false) && isSelected(tiles[1], false) && isSelected(tiles[2]));
        // Also between two tiles of one name.
        for (const int clicked : {1, 0}) {
            click(tiles[clicked]);
            for (int i = 0; i < tiles.size(); ++i)
                QVERIFY(isSelected(tiles[i], i == clicked));
        }
        fixture->expect(
            treeOf(nested), [&] { QCOMPARE(noteOn(*dialog), QString("Loading the cloud space...")); });
        hit(tiles[0]->focusProxy(), Qt::Key_F5);
        QCOMPARE(view(*dialog), QString("My space\\: My backup Soft"));
        QVERIFY(!button(*dialog, "Download")->isEnabled()); // nothing is selected any more
        QVERIFY(tilesOf(*dialog)[0]->focusProxy()->hasFocus());
        goes("Soft/")(*dialog);
        hit(field(*dialog, "Folder"), Qt::Key_Backspace);
        QCOMPARE(view(*dialog), QString("My space\\: My backup Soft"));
    }

    void twoOfOneNameAreToldApart()
    {
        const auto dialog = open({{"1=P|11=x.dwg", "2=Q", "3=P|31=y.dwg"}}, "Soft/");
        const QList<TavFileButton*> tiles = tilesOf(*dialog);
        const auto look = [](TavFileButton* tile) { return tile->grab().toImage(); };
        QCOMPARE(tiles[0]->focusProxy()->accessibleName(), QString("P (1 of 2, ID 1)"));
        QCOMPARE(tiles[1]->focusProxy()->accessibleName(), QString("Q"));
        QCOMPARE(tiles[2]->focusProxy()->accessibleName(), QString("P (2 of 2, ID 3)"));
        QCOMPARE(tiles[0]->findChild<QLabel*>()->text(), QString("P"));
        QVERIFY(look(tiles[0]) != look(tiles[2]));
        click(tiles[2]);
        click(tiles[2]);
        QCOMPARE(view(*dialog), QString("My space\\Soft\\P\\: y.dwg"));
    }

    void anIncompleteTreeSaysWhy()
    {
        const auto dialog = open(nested);
        for (const Step& step : treeOf(nested))
            fixture->expect(refused({step}));
        press(*dialog, "Refresh");
        QCOMPARE(noteOn(*dialog), QString("Not everything could be loaded: " + reason));
        goes("Soft/a/")(*dialog); // the projects that were listed before are still known
        QCOMPARE(view(*dialog), QString("My space\\Soft\\a\\: "));
        QCOMPARE(noteOn(*dialog), QString());
    }

    void downloadsWhatIsSelected_data()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < downloads.size(); ++i)
            QTest::newRow(downloads[i].row) << i;
    }

    void downloadsWhatIsSelected()
    {
        QFETCH(int, index);
        const Download& row = downloads[index];
        QVERIFY(QDir().mkdir("out"));
        for (const QString& path : row.before)
            writeFile(path, "old");
        const auto dialog = open(row.cloud, row.chosen);
        dialog->resize(4000, dialog->height()); // no note is cut
        fixture->expect(opens("Save path", {chooses(row.hasDirectory ? "out" : "")}) + row.steps);
        if (row.missed.isEmpty())
            fixture->expect(isDownloaded);
        press(*dialog, "Download");
        QCOMPARE(filesHere(), row.after);
        QCOMPARE(noteOn(*dialog), row.missed.isEmpty() ? QString() : "Not downloaded: " + row.missed);
        QVERIFY(button(*dialog, "Download")->isEnabled() && !dialog->findChild<QProgressDialog*>());
        if (!row.chosen.contains('/'))
            return;
        press(*dialog, "back");
        QCOMPARE(noteOn(*dialog), QString());
    }

    void aDownloadShowsItsProgress()
    {
        const auto dialog = open(one, "Soft/P/a.dwg");
        QVERIFY(QDir().mkdir("out"));
        fixture->expect(opens("Save path", {chooses("out")}));
        fixture->expect(brings("11", "new"), [&] {
            const auto* progress = dialog->findChild<QProgressDialog*>();
            QVERIFY(progress->isVisible() && !progress->findChild<QPushButton*>());
            QVERIFY(progress->labelText() == "Downloading..." && progress->maximum() == 0);
            QCOMPARE(noteOn(*dialog), QString("Downloading a.dwg..."));
            for (const char* text : {"back", "Refresh", "Download"})
                QVERIFY(!button(*dialog, text)->isEnabled());
        });
        fixture->expect(isDownloaded);
        press(*dialog, "Download");
    }

    void aTransferOfAPatientClientCanBeCancelled()
    {
        enum
        {
            ByButton,
            WindowClosed,
            WindowDestroyed
        };
        for (const int how : {ByButton, WindowClosed, WindowDestroyed}) {
            bePatient();
            auto dialog = open({{"1=P|11=a.dwg|12=b.dwg"}}, "Soft/P");
            QVERIFY(QDir().mkpath("out"));
            const auto look = [&](QDialog& window) {
                QCOMPARE(window.findChild<QLabel*>()->text(), QString("Downloading P/b.dwg... (2 of 2)"));
                QCOMPARE(window.findChild<QProgressBar*>()->maximum(), 0); // nothing has come yet
                QVERIFY(!button(*dialog, "Refresh")->isEnabled() && noteOn(*dialog).isEmpty());
                if (how == ByButton)
                    press(window, "Cancel");
                else if (how == WindowClosed)
                    dialog->close();
                else
                    dialog.reset();
            };
            fixture->expect(opens("Save path", {chooses("out")}) + brings("11", "one")
                + brings("12", QByteArray()) + opens("Transfer", {look}));
            press(*dialog, "Download");
            QCOMPARE(filesHere(), Contents({{"out/P/a.dwg", "one"}}));
            if (how == ByButton)
                QCOMPARE(noteOn(*dialog), QString("Cancelled. Files that were downloaded: 1"));
            QVERIFY(QDir("out").removeRecursively());
        }
    }

    void aPatientClientTriesAgainWhatFailed()
    {
        bePatient();
        const auto dialog = open({{"1=P|11=a.dwg|12=b.dwg|13=.."}}, "Soft/P");
        dialog->resize(4000, dialog->height());
        QVERIFY(QDir().mkdir("out"));
        const QString reasons = unusable + " Its name in the cloud cannot be the name of a file.";
        const auto again = [&](const QString& names) {
            Steps steps = question("Not everything could be downloaded. Try the rest again?", yes);
            steps[0].box.more = "Not downloaded: " + names + ". " + reasons;
            return steps;
        };
        fixture->expect(opens("Save path", {chooses("out")}) + brings("11", "") + brings("12", "two")
            + again("P/a.dwg, P/..") + brings("11", "") + again("P/a.dwg, P/..") + brings("11", "one"));
        press(*dialog, "Download");
        QCOMPARE(filesHere(), Contents({{"out/P/a.dwg", "one"}, {"out/P/b.dwg", "two"}}));
        QCOMPARE(noteOn(*dialog),
            QString("Not downloaded: P/... Its name in the cloud cannot be the name of a file."));
    }

    void tilesStandInRowsOfFiveAndAreHiddenOutOfView()
    {
        const auto dialog = open(wide(301), "Soft/P/");
        QCoreApplication::processEvents();
        const auto* area = dialog->findChild<TileArea*>();
        const auto* grid = area->findChild<QGridLayout*>();
        const QList<TavFileButton*> tiles = tilesOf(*dialog);
        QCOMPARE(tiles.size(), 301);
        for (int i = 0; i < tiles.size(); ++i) {
            QCOMPARE(tiles[i]->getName(), QString("f%1").arg(i));
            QCOMPARE(grid->itemAtPosition(i / 5, i % 5)->widget(), static_cast<QWidget*>(tiles[i]));
        }
        QScrollBar* bar = area->verticalScrollBar();
        const QList<int> stops{0, bar->maximum() / 2, bar->maximum()};
        for (int stop : {0, 1, 2, 0}) {
            bar->setValue(stops[stop]);
            for (int i = 0; i < stops.size(); ++i) {
                const TavFileButton* tile = tiles[1 + i * 149]; // the first, with the focus, is always there
                QVERIFY(tile->isVisible() == (i == stop) && isInView(*dialog, tile) == (i == stop));
            }
        }
        // A selected tile that was scrolled out of view is deselected too.
        click(tiles.first());
        field(*dialog, "Folder")->setFocus();
        bar->setValue(bar->maximum());
        click(tiles.last());
        QVERIFY(isSelected(tiles.first(), false) && isSelected(tiles.last()));
        press(*dialog, "back");
        QCOMPARE(bar->value(), 0); // the next folder begins at its top
    }

    void theKeyboardReachesEveryTile()
    {
        const auto dialog = open(wide(60), "Soft/");
        const auto hit = [&](Qt::Key key) { robot::key(*dialog, key); };
        const auto focusIsOn = [&](const TavFileButton* tile) {
            QCoreApplication::processEvents();
            return dialog->focusWidget() == tile->focusProxy() && isInView(*dialog, tile);
        };
        tilesOf(*dialog)[0]->setFocus();
        hit(Qt::Key_Space);
        QVERIFY(isSelected(tilesOf(*dialog)[0]));
        hit(Qt::Key_Return);
        const QList<TavFileButton*> tiles = tilesOf(*dialog);
        QCOMPARE(tiles.size(), 60);
        const QPair<Qt::Key, int> moves[]{{Qt::Key_Right, 1}, {Qt::Key_Down, 6}, {Qt::Key_Left, 5},
            {Qt::Key_Left, 4}, {Qt::Key_Up, 4}, {Qt::Key_End, 59}, {Qt::Key_Down, 59}, {Qt::Key_Right, 59},
            {Qt::Key_Up, 54}, {Qt::Key_Home, 0}, {Qt::Key_Left, 0}};
        for (const auto& [key, index] : moves) {
            hit(key);
            QVERIFY2(focusIsOn(tiles[index]), qPrintable(QString::number(index)));
        }
        for (const TavFileButton* tile : tiles) {
            QVERIFY2(focusIsOn(tile), qPrintable(tile->getName()));
            hit(Qt::Key_Tab);
        }
        QVERIFY(button(*dialog, "Refresh")->hasFocus());
        hit(Qt::Key_Backtab);
        QVERIFY(focusIsOn(tiles.last()));
        hit(Qt::Key_Enter);
        QVERIFY(isSelected(tiles.last()));
        // Enter in the path neither downloads nor closes.
        field(*dialog, "Folder")->setFocus();
        hit(Qt::Key_Return);
        QVERIFY(dialog->isVisible());
    }

    void theParentShowsThatTheSpaceLoads()
    {
        QDialog below;
        bringUp(below);
        fixture->expect(
            spaceOf(one), [&] { QCOMPARE(noteOn(below), QString("Loading the cloud space...")); });
        const std::unique_ptr<QDialog> dialog(emptySpace(&fixture->client(), &below));
        QCOMPARE(noteOn(below), QString());
    }

private:
    /// Has the client count from the last byte.
    void bePatient()
    {
        CloudTransferOptions options;
        options.limit = CloudTransferOptions::Limit::LastByte;
        options.limitMs = 100000;
        fixture->client().setTransferOptions(options);
    }

    /// The dialog at \a path.
    std::unique_ptr<QDialog> open(const Cloud& cloud, const QString& path = {})
    {
        auto dialog = fixture->open(emptySpace, spaceOf(cloud));
        goes(path)(*dialog);
        return dialog;
    }
};

QTEST_MAIN(TestCloudSpace)
#include "tst_cloudspace.moc"
