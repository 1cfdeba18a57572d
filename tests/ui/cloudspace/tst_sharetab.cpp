// SPDX-License-Identifier: MIT
#include "support/CloudSpaceFixture.h"
#include "support/DialogFlows.h"

#include <QComboBox>
#include <QFileDialog>
#include <QLabel>

static QComboBox* comboIn(const QWidget& window, const QString& name = {})
{
    for (auto* candidate : window.findChildren<QComboBox*>())
        if (candidate->isVisible() && candidate->accessibleName() == name)
            return candidate;
    return nullptr;
}

class TestShareTab : public CloudSpaceTest
{
    Q_OBJECT

private slots:
    void sharesForAsLongAsChosen()
    {
        const QList<int> shared{24, 72, 168, 360, 720, 360}; // the last when nothing is chosen
        const QList<int> hours[]{{2, 12, 24, 72, 168, 24}, shared, shared};
        const QString days = "1 Day, 3 Days, 7 Days, 15 Days, 30 Days";
        const QString items[]{"2 Hours, 12 Hours, 1 Day, 3 Days, 7 Days", days, days};
        const QStringList rows[]{{}, {"1(3)"}, {"7"}};
        const QByteArray whom[]{"", "u,me", "7"};
        const auto dialog = fixture->open(spaceKind.make, spaceKind.opening);
        for (const int mode : {Anonymous, Friends, Groups}) {
            sharesBy(mode, rows[mode])(*dialog);
            auto* combo = comboIn(*dialog);
            QStringList texts;
            for (int i = 0; i < combo->count(); ++i)
                texts.append(combo->itemText(i));
            QCOMPARE(texts.join(", "), items[mode]);
            QCOMPARE(combo->currentIndex(), 0);
            for (int i = 0; i < hours[mode].size(); ++i) {
                combo->setCurrentIndex(i < 5 ? i : -1);
                const auto sent = QByteArray::number(hours[mode][i]);
                fixture->expect(uploadsDwg + refused(sharing(mode, whom[mode], sent))
                    + error(mode == Friends ? "Failed to share file with specified user!" : "Share failed!"));
                fixture->act(dialog.get(), shares(mode, {}));
            }
        }
    }

    void browsesForTheChosenType()
    {
        const QVector<QStringList> rows{{"DGN File", "b.dgn", "(*.dgn)"}, {"DWG File", "a.DWG", "(*.dwg)"},
            {"DWG File", "", "(*.dwg)"}, {"", "a.xyz", "()"}};
        for (const QStringList& row : rows) {
            const Make make = row[0].isEmpty() ? Make(emptySpace) : spaceKind.make;
            const Act looks = [row](QDialog& dialog) {
                QCOMPARE(static_cast<QFileDialog&>(dialog).nameFilters(), QStringList(row[2]));
            };
            const auto dialog = fixture->open(
                make, spaceKind.opening + opens("Obtaining the file path", {looks, chooses(row[1])}));
            sharesBy(Anonymous)(*dialog);
            comboIn(*dialog, "File type")->setCurrentText(row[0]);
            type(*dialog, "File", "earlier");
            press(*dialog, "Browse...");
            QCOMPARE(field(*dialog, "File")->text(),
                row[1].isEmpty() ? "earlier" : QDir().absoluteFilePath(row[1]));
        }
    }

    void eachModeHasItsControls()
    {
        const QString ownButtons[]{"Extract", manageFriends, manageGroups};
        const QString captions[]{"", "Friends list (3)", "Groups (3)"};
        const auto dialog = fixture->open(spaceKind.make, spaceKind.opening);
        for (const int mode : {Friends, Groups, Anonymous}) {
            sharesBy(mode)(*dialog);
            for (const int other : {Anonymous, Friends, Groups})
                QCOMPARE(bool(button(*dialog, ownButtons[other])), other == mode);
            QString caption;
            for (const auto* label : dialog->findChildren<QLabel*>())
                if (label->isVisible() && label->buddy() == viewIn(*dialog))
                    caption += label->text();
            QCOMPARE(caption, captions[mode]);
            // Enter in the path presses the mode's own button.
            fixture->expect(prompt("Please select the file to share first."));
            robot::click(*field(*dialog, "File"));
            robot::key(*dialog, Qt::Key_Enter);
        }
    }

    void aClickTogglesItsRow()
    {
        const auto dialog = fixture->open(spaceKind.make, spaceKind.opening);
        for (const int mode : {Friends, Groups}) {
            sharesBy(mode)(*dialog);
            const auto* view = viewIn(*dialog);
            const auto checked = [&] {
                const QStringList rows = rowsOf(*dialog);
                return QString(rows[0][1]) + rows[1][1];
            };
            const auto clickCell = [&](int row, int column) {
                robot::click(*view->viewport(), view->visualRect(view->model()->index(row, column)).center());
                return checked();
            };
            QCOMPARE(clickCell(1, 1), QString(" x"));
            QCOMPARE(clickCell(0, 2), QString("xx"));
            QCOMPARE(clickCell(1, 1), QString("x "));
            QCOMPARE(clickCell(0, 0), QString("  ")); // a click on the box toggles once, not twice
            robot::key(*view, Qt::Key_Space);
            QCOMPARE(checked(), QString(" x"));
        }
    }
};

QTEST_MAIN(TestShareTab)
#include "tst_sharetab.moc"
