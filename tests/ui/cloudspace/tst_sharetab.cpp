// SPDX-License-Identifier: MIT
#include "CloudSpaceFixture.h"

#include "support/MultipartForm.h"
#include "ui/cloudspace/CloudShareTabWidget.h"
#include "ui/cloudspace/RecordTable.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QVBoxLayout>

namespace {

constexpr int Anonymous = 0, Friends = 1, Groups = 2;

const QStringList modeNames{"Anonymous share", "Share To friends", "Share To groups"};
/// The button that only this mode has.
const QStringList ownButtons{"Extract", "Address book Management", "Group management"};

const QByteArray friendList = R"([
    {"id":1,"friendUser":"liu","friendPhone":"138","friendRemark":"Liu <i>","friendUnit":"Bureau"},
    {"id":2,"friendUser":"a b","friendPhone":"139","friendRemark":"","friendUnit":""},
    {"id":3,"friendUser":"王","friendPhone":"137","friendRemark":"Wang","friendUnit":"U"}])";
const QByteArray groupList = R"([
    {"id":50,"groupName":"Team (a) - b","createUser":"me"},
    {"id":"g-6","groupName":"","createUser":"liu"}])";
const QMap<QString, QString> fileTypes{{"dgn", "32"}, {"dwg", "31"}};

/// The tab in a window of its own.
struct Window : QDialog
{
    Window(CloudFileManger& client, const QMap<QString, QString>& types)
    {
        auto* tab = new CloudShareTabWidget(&client, client.getProjectName(), client.getProjectId(), types,
            QGuiApplication::clipboard(), "4", "me", nullptr);
        (new QVBoxLayout(this))->addWidget(tab);
        connect(tab, &CloudShareTabWidget::refreshMyCloudSpace, this, [this] { ++refreshes; });
        bringUp(*this);
    }

    int refreshes = 0;
};

template <class Widget>
Widget* seenIn(const QWidget& window, const QString& name = {})
{
    for (auto* candidate : window.findChildren<Widget*>())
        if (candidate->isVisible() && candidate->accessibleName() == name)
            return candidate;
    return nullptr;
}

void clickRow(RecordTable* table, int row, int column = 1)
{
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
        table->visualRect(table->model()->index(row, column)).center());
}

/// Chooses the mode and clicks rows of its table, if it has one.
void choose(const Window& window, int mode, const QList<int>& rows = {})
{
    for (auto* radio : window.findChildren<QRadioButton*>())
        if (radio->text() == modeNames[mode])
            QTest::mouseClick(radio, Qt::LeftButton);
    for (const int row : rows)
        if (mode != Anonymous)
            clickRow(seenIn<RecordTable>(window), row);
}

/// The list on screen: its caption, then a line to each row; a checked one begins with "x".
QStringList listIn(const Window& window)
{
    const auto* table = seenIn<RecordTable>(window);
    QStringList lines;
    for (const auto* label : window.findChildren<QLabel*>())
        if (table && label->buddy() == table)
            lines.append(label->text());
    for (int row = 0; table && row < table->rowCount(); ++row) {
        QStringList texts{table->cellWidget(row, 0)->findChild<QCheckBox*>()->isChecked() ? "x" : ""};
        for (int column = 1; column < table->columnCount(); ++column)
            texts.append(table->text(row, column));
        lines.append(texts.join('|'));
    }
    return lines;
}

/// A request of a share, with the answer to it.
struct Request
{
    QByteArray method;
    QByteArray target;
    QByteArray answer;
    QStringList parts = {}; ///< of the form, in their order: heads and bodies
};

/// What is posted: \a fields in their order and, for an upload, a file.
Request post(const char* operation, const QByteArray& fields, const QByteArray& answer)
{
    Request request{"POST", QByteArray("/project/cloudProjectShare/") + operation, answer};
    for (const QByteArray& field : fields.split('&')) {
        const int sign = field.indexOf('=');
        request.parts.append(fieldHead(field.left(sign)) + field.mid(sign));
    }
    return request;
}

Request upload(const QByteArray& supportType, const QByteArray& name, bool done = true)
{
    Request request =
        post("upload", "projectId=9&sourceClient=Soft&supportTypeId=" + supportType + "&typeFlag=1",
            done ? reply(R"({"logicalId":42})") : refusal);
    request.parts.append(fileHead(name) + "=drawing");
    return request;
}

/// The share with \a whom, or by a code.
Request sharing(int mode, const QByteArray& whom, bool done = true, const QByteArray& hours = "24")
{
    const char* const operations[]{"toAnonymous", "toUSer", "toGroup"};
    const QByteArray fields = "durationHours=" + hours + (mode == Groups ? "&groupId=" + whom : "")
        + "&logicalIds=42&projectId=9&sourceClient=Soft" + (mode == Friends ? "&userNames=" + whom : "");
    return post(operations[mode], fields,
        !done                   ? refusal
            : mode == Anonymous ? reply(R"("<b>A1")")
                                : success);
}

Request extraction(const QByteArray& with, bool done = true)
{
    return {"GET", "/project/cloudProjectShare/extractByCode?extractionCode=" + with + "&sourceClient=Soft",
        done ? success : refusal};
}

const Request byCode = sharing(Anonymous, {}, true, "2");
const Request ownExtraction = extraction("%3Cb%3EA1");
const Request projects{"GET", "/project/cloudProjectBackup/getProjectList?sourceClient=Soft",
    reply(R"([{"id":8,"sourceClient":"Soft","projectTitle":"Eight"},
              {"id":9,"sourceClient":"Soft","projectTitle":"Nine"}])")};

ExpectedBox prompt(const QString& text, const QString& title = "Prompt")
{
    return {QMessageBox::Information, title, text, QMessageBox::Ok, QMessageBox::Ok, {}, {"OK"}};
}

ExpectedBox error(const QString& text, const QString& button = "OK")
{
    return {QMessageBox::Critical, "Error", text, QMessageBox::Ok, QMessageBox::Ok, {}, {button}};
}

const ExpectedBox noFile = prompt("Please select the file to share first.");
const ExpectedBox badFile = error("Invalid file path!");
const ExpectedBox noType = error("Could not find the server configuration table number for this file type!");
const ExpectedBox notShared = error("Share failed!");
const ExpectedBox notWithFriends = error("Failed to share file with specified user!");
const ExpectedBox isShared = prompt("Share successfully!");
const ExpectedBox codeIs =
    prompt("Fetch Code:<b>A1\nThe fetch code is copied to the clipboard.", "Anonymous share");

/// A share from the press of the button to its end.
struct Flow
{
    QString row;
    int mode;
    QString file;
    QList<int> checked; ///< rows of the table
    QString project; ///< the button pressed in the choice of a project; empty when it does not come
    QVector<Request> requests; ///< after the list of projects
    QVector<ExpectedBox> boxes;
    bool refreshes = false;
};

QVector<Flow> flows()
{
    const Request a = upload("31", "a.DWG");
    const QByteArray all = "liu,王,me";
    QVector<Flow> rows{
        {"all well", Anonymous, "a.DWG", {}, "OK", {a, byCode, ownExtraction},
            {codeIs, prompt("Please go to my Cloud space to view the uploaded file.")}, true},
        {"share fails", Anonymous, "a.DWG", {}, "OK", {a, sharing(Anonymous, {}, false, "2")}, {notShared}},
        {"extraction fails", Anonymous, "a.DWG", {}, "OK", {a, byCode, extraction("%3Cb%3EA1", false)},
            {codeIs, error("Fetch Code invalid!")}},
        {"all well", Friends, "a.DWG", {0, 2}, "OK", {a, sharing(Friends, all)}, {isShared}, true},
        {"one friend", Friends, "b.dgn", {1}, "OK", {upload("32", "b.dgn"), sharing(Friends, "a b,me")},
            {isShared}, true},
        {"nobody checked", Friends, "a.DWG", {}, "", {}, {prompt("Choose friends")}},
        {"share fails", Friends, "a.DWG", {0, 2}, "OK", {a, sharing(Friends, all, false)}, {notWithFriends}},
        {"all well", Groups, "a.DWG", {0, 1}, "OK", {a, sharing(Groups, "50"), sharing(Groups, "g-6")},
            {isShared}, true},
        // The platform may take a type that the host does not know.
        {"type unknown", Groups, "plain", {0}, "OK", {upload("", "plain"), sharing(Groups, "50")},
            {noType, isShared}, true},
        {"none checked", Groups, "a.DWG", {}, "OK", {a}, {prompt("Please choose a group.")}},
        {"first share fails", Groups, "a.DWG", {0, 1}, "OK", {a, sharing(Groups, "50", false)}, {notShared}},
        {"second share fails", Groups, "a.DWG", {0, 1}, "OK",
            {a, sharing(Groups, "50"), sharing(Groups, "g-6", false)}, {notShared}},
    };
    for (const int mode : {Anonymous, Friends, Groups})
        rows += {
            {"no file", mode, "", {0}, "", {}, {noFile}},
            {"file is missing", mode, "c.dwg", {0}, "", {}, {badFile}},
            {"file is a folder", mode, ".", {0}, "", {}, {badFile}},
            {"project cancelled", mode, "a.DWG", {0}, "Cancel", {}, {}},
            {"upload fails", mode, "a.xyz", {0}, "OK", {upload("", "a.xyz", false)},
                {noType, error("File upload failed!")}},
        };
    return rows;
}

} // namespace

Q_DECLARE_METATYPE(Flow)

class TestShareTab : public CloudSpaceTest
{
    Q_OBJECT

private slots:
    void shares_data()
    {
        QTest::addColumn<Flow>("flow");
        for (const Flow& flow : flows())
            QTest::newRow(qPrintable(modeNames[flow.mode] + ": " + flow.row)) << flow;
    }

    void shares()
    {
        QFETCH(Flow, flow);
        const auto window = open();
        QGuiApplication::clipboard()->setText("before");
        choose(*window, flow.mode, flow.checked);
        share(*window, flow);
        QCOMPARE(window->refreshes, int(flow.refreshes));
        const bool hasCode = !flow.boxes.isEmpty() && flow.boxes.first().text == codeIs.text;
        QCOMPARE(QGuiApplication::clipboard()->text(), QString(hasCode ? "<b>A1" : "before"));
    }

    void sharesForAsLongAsChosen()
    {
        const QList<int> shared{24, 72, 168, 360, 720, 360}; // the last when nothing is chosen
        const QList<int> hours[]{{2, 12, 24, 72, 168, 24}, shared, shared};
        const QString days = "1 Day, 3 Days, 7 Days, 15 Days, 30 Days";
        const QString items[]{"2 Hours, 12 Hours, 1 Day, 3 Days, 7 Days", days, days};
        const auto window = open();
        for (const int mode : {Anonymous, Friends, Groups}) {
            choose(*window, mode, {0});
            auto* combo = seenIn<QComboBox>(*window);
            QStringList texts;
            for (int i = 0; i < combo->count(); ++i)
                texts.append(combo->itemText(i));
            QCOMPARE(texts.join(", "), items[mode]);
            QCOMPARE(combo->currentIndex(), 0);
            for (int i = 0; i < hours[mode].size(); ++i) {
                combo->setCurrentIndex(i < 5 ? i : -1);
                const auto sent = QByteArray::number(hours[mode][i]);
                const QByteArray whom[]{"", "liu,me", "50"};
                share(*window,
                    {{}, mode, "a.DWG", {}, "OK",
                        {upload("31", "a.DWG"), sharing(mode, whom[mode], false, sent)},
                        {mode == Friends ? notWithFriends : notShared}});
            }
        }
    }

    void extracts()
    {
        const QMap<QByteArray, ExpectedBox> boxes{{"", prompt("The text box is empty.")},
            {"refused", error("Extract code invalid!", "Ok")},
            {"taken", prompt("Extraction successfully! Please go to My Cloud space to view the file")}};
        const auto window = open();
        auto* edit = seenIn<QLineEdit>(*window);
        for (const QByteArray& given : boxes.keys()) {
            QGuiApplication::clipboard()->setText(given.isEmpty() ? given : ' ' + given + "\r\n");
            press(*window, "Paste");
            QCOMPARE(edit->text(), QString(given));
            for (const bool byEnter : {false, true}) {
                if (!given.isEmpty())
                    expect(extraction(given, given == "taken"));
                fixture->boxes().expect(boxes[given]);
                bringUp(*window);
                edit->setText(given + ' ');
                edit->setFocus();
                if (byEnter)
                    QTest::keyClick(edit, Qt::Key_Return);
                else
                    press(*window, "Extract");
                QCOMPARE(window->refreshes, given == "taken" ? 1 + byEnter : 0);
            }
        }
    }

    void browsesForTheChosenType()
    {
        const QVector<QStringList> rows{{"DGN File", "b.dgn", "(*.dgn)"}, {"DWG File", "a.DWG", "(*.dwg)"},
            {"DWG File", "", "(*.dwg)"}, {"", "a.xyz", "()"}};
        for (const QStringList& row : rows) {
            const auto window = open(row[0].isEmpty() ? QMap<QString, QString>() : fileTypes);
            seenIn<QComboBox>(*window, "File type")->setCurrentText(row[0]);
            type(*window, "File", "earlier");
            const QString path = row[1].isEmpty() ? "" : QFileInfo(row[1]).absoluteFilePath();
            fixture->whenOpened("Obtaining the file path", [&](QDialog& dialog) {
                QCOMPARE(qobject_cast<QFileDialog*>(&dialog)->nameFilters(), QStringList(row[2]));
                dialog.findChild<QLineEdit*>("fileNameEdit")->setText(path);
                QMetaObject::invokeMethod(&dialog, path.isEmpty() ? "reject" : "accept");
            });
            press(*window, "Browse...");
            QCOMPARE(field(*window, "File")->text(), path.isEmpty() ? "earlier" : path);
        }
    }

    void eachModeHasItsControls()
    {
        const QStringList lists[]{{},
            {"Friends list (3)", "|Liu <i>|138|Bureau|liu", "||139||a b", "|Wang|137|U|王"},
            {"Groups (2)", "|Team (a) - b|50", "||g-6"}};
        const auto window = open();
        for (const int mode : {Friends, Groups, Anonymous}) {
            choose(*window, mode);
            for (int i = 0; i < ownButtons.size(); ++i)
                QCOMPARE(bool(button(*window, ownButtons[i])), i == mode);
            QCOMPARE(listIn(*window).join("\n"), lists[mode].join("\n"));
            // Enter in the path is the mode's own button.
            bringUp(*window);
            field(*window, "File")->setFocus();
            fixture->boxes().expect(noFile);
            QTest::keyClick(window->focusWidget(), Qt::Key_Enter);
        }
    }

    void aClickTogglesItsRow()
    {
        const auto window = open();
        for (const int mode : {Friends, Groups}) {
            choose(*window, mode);
            auto* table = seenIn<RecordTable>(*window);
            const auto checked = [&] {
                const QStringList list = listIn(*window);
                return QString(list[1][0]) + list[2][0];
            };
            const QPair<int, const char*> clicks[]{{1, "|x"}, {0, "xx"}, {1, "x|"}};
            for (const auto& [row, expected] : clicks) {
                clickRow(table, row, 2 - row);
                QCOMPARE(checked(), QString(expected));
            }
            // The box itself is no second click on the row.
            QTest::mouseClick(table->cellWidget(0, 0)->findChild<QCheckBox*>(), Qt::LeftButton);
            QCOMPARE(checked(), QString("||"));
            QTest::keyClick(table, Qt::Key_Space);
            QCOMPARE(checked(), QString("|x"));
        }
    }

    void listsFollowTheirManagement()
    {
        const QByteArray renewed =
            reply(R"([{"id":9,"friendUser":"new","friendPhone":"1","groupName":"new","createUser":"x"}])");
        const QByteArray targets[]{
            {}, "/project/cloudAddressBook/list", "/project/cloudProjectGroupUser/listUserGroups"};
        const QStringList lists[]{{}, {"Friends list (1)", "||1||new"}, {"Groups (1)", "|new|9"}};
        const QStringList complaints{"", "Failed to query the address book list!", "Group Query Failure!"};
        const auto window = open();
        for (const int mode : {Friends, Groups}) {
            choose(*window, mode, {0});
            // Closed or left by Escape; what was there stays when it cannot be listed again.
            for (const bool escape : {false, true}) {
                fixture->expect("GET", targets[mode], reply("[]"));
                fixture->expect("GET", targets[mode], escape ? refusal : renewed);
                if (escape)
                    fixture->boxes().expect(error(complaints[mode]));
                fixture->whenOpened(ownButtons[mode], [&](QDialog& dialog) {
                    if (escape)
                        QTest::keyClick(&dialog, Qt::Key_Escape);
                    else
                        press(dialog, "Close");
                    QVERIFY(!dialog.isVisible());
                });
                press(*window, ownButtons[mode]);
                QCOMPARE(listIn(*window).join("\n"), lists[mode].join("\n"));
            }
        }
    }

private:
    /// With some files in the working directory.
    std::unique_ptr<Window> open(const QMap<QString, QString>& types = fileTypes)
    {
        for (const char* name : {"a.DWG", "b.dgn", "a.xyz", "plain"}) {
            QFile file(name);
            file.open(QIODevice::WriteOnly);
            file.write("drawing");
        }
        fixture->expectLists(friendList, groupList);
        return std::make_unique<Window>(fixture->client(), types);
    }

    void expect(const Request& request) { fixture->expect(request.method, request.target, request.answer); }

    void chooseProject(const QString& answer)
    {
        fixture->whenOpened("Choose Cloud Project", [answer](QDialog& dialog) {
            clickRow(dialog.findChild<RecordTable*>(), 1);
            press(dialog, answer);
        });
    }

    /// Shares in the mode and with those that are chosen already.
    void share(const Window& window, const Flow& flow)
    {
        type(window, "File", flow.file);
        if (!flow.project.isEmpty()) {
            expect(projects);
            chooseProject(flow.project);
        }
        for (const Request& request : flow.requests)
            expect(request);
        for (const ExpectedBox& box : flow.boxes)
            fixture->boxes().expect(box);
        press(window, "Share");

        const int first = fixture->requests().size() - flow.requests.size();
        for (int i = 0; i < flow.requests.size(); ++i) {
            const RecordedRequest sent = fixture->requests()[first + i];
            QCOMPARE(sent.target, flow.requests[i].target);
            QString fault;
            QStringList parts;
            for (const FormPart& part : sent.body.isEmpty() ? QVector<FormPart>() : parseForm(sent, fault))
                parts.append(part.head.split('\n').first().trimmed() + '=' + part.body);
            QCOMPARE(fault + parts.join('\n'), flow.requests[i].parts.join('\n'));
        }
    }
};

QTEST_MAIN(TestShareTab)
#include "tst_sharetab.moc"
