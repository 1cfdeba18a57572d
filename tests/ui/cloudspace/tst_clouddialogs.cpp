// SPDX-License-Identifier: MIT
#include "support/CloudSpaceFixture.h"
#include "support/DialogFlows.h"

#include "ui/cloudspace/MycheckBox.h"
#include "ui/cloudspace/RecordTable.h"

#include <QLabel>
#include <QScrollBar>
#include <QTreeView>

using namespace tav;

Q_DECLARE_METATYPE(Flow)
Q_DECLARE_METATYPE(Kind)

class TestCloudDialogs : public CloudSpaceTest
{
    Q_OBJECT

private slots:
    void everyFlowEndsAsDescribed_data()
    {
        QTest::addColumn<Kind>("kind");
        QTest::addColumn<Flow>("flow");
        for (const Kind& kind : kinds)
            for (const Flow& flow : kind.flows + kind.otherFlows)
                QTest::newRow(qPrintable(kind.name + ": " + flow.name)) << kind << flow;
    }

    void everyFlowEndsAsDescribed()
    {
        QFETCH(Kind, kind);
        QFETCH(Flow, flow);
        QApplication::clipboard()->setText("before");
        const auto dialog = fixture->open(kind.make, kind.opening + flow.steps);
        for (int i = 0; i < kind.headers.size(); ++i)
            QCOMPARE(viewIn(*dialog)->model()->headerData(i, Qt::Horizontal).toString(), kind.headers[i]);
        fixture->act(dialog.get(), flow.acts);
        const QStringList& rows = flow.shows.isEmpty() ? kind.loaded : flow.shows;
        if (!rows.isEmpty())
            QCOMPARE(rowsOf(*dialog), rows);
        QVERIFY(dialog->isVisible());
        for (const auto* child : dialog->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly))
            QVERIFY(child->isEnabled());
        const bool hasCode = std::any_of(flow.steps.begin(), flow.steps.end(),
            [](const Step& step) { return step.box.title == "Anonymous share"; });
        QCOMPARE(QApplication::clipboard()->text() == fetched, hasCode);
    }

    void nothingIsRequestedBeforeADialogIsShown()
    {
        for (const Kind& kind : {bookKind, groupKind, projectKind}) {
            const std::unique_ptr<QDialog> dialog(kind.make(&fixture->client(), nullptr));
            QCoreApplication::processEvents();
            dialog->show();
            dialog->hide();
            QCoreApplication::processEvents();
            QVERIFY(fixture->requests().isEmpty());
        }
    }

    void groupsAreExpandedWithTheirIcons()
    {
        const auto dialog = fixture->open(groupKind.make, groupKind.opening);
        const auto* tree = dialog->findChild<QTreeView*>();
        const Texts rows{
            {"My groups", "folder"}, {site, "202"}, {"bob - group manager", "201"}, {"me", "200"}};
        for (const auto& [text, file] : rows) {
            const QModelIndex index = indexOf(*tree->model(), text);
            const QIcon expected(":/tav_cloud_platform_sdk/Resources/" + file + ".png");
            const QImage icon = index.data(Qt::DecorationRole).value<QIcon>().pixmap(16).toImage();
            QVERIFY(!icon.isNull() && icon == expected.pixmap(16).toImage());
            QVERIFY(!tree->model()->hasChildren(index) || tree->isExpanded(index));
        }
    }

    void anEmptyListSaysWhy()
    {
        const auto saysSo = [this](const Kind& kind, const Steps& steps) {
            const auto dialog = fixture->open(kind.make, steps);
            auto* table = dialog->findChild<RecordTable*>();
            const QImage image = table->viewport()->grab().toImage();
            table->setEmptyText(QString());
            return table->rowCount() == 0 && image != table->viewport()->grab().toImage();
        };
        QVERIFY(saysSo(bookKind, get(book + "list", reply("[]"))));
        QVERIFY(saysSo(bookKind, notLoaded));
        QVERIFY(saysSo(projectKind, get(projectList, reply("[]"))));
        QVERIFY(saysSo(projectKind, refused(projects)));
        const auto shown = [this](const Steps& steps) {
            const auto dialog = fixture->open(groupKind.make, steps);
            const auto* hint = dialog->findChild<QLabel*>();
            return rowsOf(*dialog).join(',') + (hint->isVisible() ? ": " + hint->text() : QString());
        };
        QCOMPARE(shown(get(users + "listUserGroups", reply("[]"))),
            QString("My groups: You are in no group yet. Create one, or join one by its invitation code."));
        QCOMPARE(shown(refused(groups) + error("Failed to query group information!")),
            QString(": The groups could not be loaded."));
        const QStringList& rows = groupKind.loaded; // but for the members of the first
        QCOMPARE(shown(groups + unknown + in8 + inSite), (rows.mid(0, 2) + rows.mid(4)).join(','));
    }

    void exactlyOneProjectIsChosen()
    {
        chosen = {"i", "t", "s", "target", "d"};
        const auto dialog =
            fixture->open(projectKind.make, projects + prompt("Please select a cloud project"));
        auto* table = dialog->findChild<QTableWidget*>();
        QVERIFY(
            table->currentRow() == 1 && table->selectedItems().isEmpty()); // begins there, chooses nothing
        press(*dialog, "OK");
        const auto clickBox = [&](int row) {
            auto* check = static_cast<MycheckBox*>(table->cellWidget(row, 0))->checkBox();
            robot::click(*check);
        };
        clickBox(1);
        QCOMPARE(rowsOf(*dialog), QStringList({"[ ]" + dam, "[x]" + current}));
        const QStringList damChosen{"[x]" + dam, "[ ]" + current};
        robot::key(*table, Qt::Key_Up);
        QCOMPARE(rowsOf(*dialog), damChosen);
        clickRow(*dialog, "Dam"); // which unchecks nothing
        QCOMPARE(rowsOf(*dialog), damChosen);
        const auto& [id, title, source, target, description] = chosen;
        QCOMPARE(id + title + source + target + description, QString("3DamSoft"));
        clickBox(0); // the choice stays
        QCOMPARE(rowsOf(*dialog), projectKind.loaded);
        QCOMPARE(fixture->client().getProjectId(), QString("7"));
        robot::key(*dialog, Qt::Key_Return);
        QCOMPARE(fixture->client().getProjectId() + chosen.id, QString("33"));
    }

    void longNamesUseTheRoomThereIs()
    {
        const QString longName(400, 'n');
        const auto dialog =
            fixture->open(projectKind.make, get(projectList, list(project, {{"3", longName}, {"4", "Dam"}})));
        const auto* table = dialog->findChild<RecordTable*>();
        const auto isRoomy = [&] {
            const bool isWidest = table->columnWidth(1) > table->columnWidth(2);
            return isWidest && !table->horizontalScrollBar()->isVisible();
        };
        QVERIFY(isRoomy());
        dialog->resize(dialog->width() * 3 / 4, dialog->height());
        QCoreApplication::processEvents();
        QVERIFY(isRoomy());
    }

    void aNewProjectReplacesTheChosenOne()
    {
        for (const bool isListed : {false, true}) {
            const Steps end = isListed ? moreProjects + isAdded
                                       : projects + isAdded + prompt("Please select a cloud project");
            const auto dialog = fixture->open(projectKind.make, projects + addsProject + end);
            fixture->act(dialog.get(), {presses("Add"), hits(Qt::Key_Return)});
            QCOMPARE(dialog->isVisible(), !isListed);
        }
        QCOMPARE(fixture->client().getProjectId() + chosen.projectTitle, QString("12New"));
    }
};

QTEST_MAIN(TestCloudDialogs)
#include "tst_clouddialogs.moc"
