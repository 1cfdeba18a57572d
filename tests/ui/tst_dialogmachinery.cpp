// SPDX-License-Identifier: MIT
#include "support/DialogFixture.h"

#include "support/Robot.h"
#include "ui/BlockingCall.h"
#include "ui/MessageBoxes.h"
#include "ui/ScopedDialog.h"
#include "ui/WindowNote.h"

#include <QApplication>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

using namespace tav;

namespace {

const QByteArray granted = R"({"code":0})";
const QByteArray refusal = R"({"code":1,"msg":"no"})";

/// A window that shows how often its button was pressed and what was typed.
struct Window : QDialog
{
    explicit Window(QWidget* parent = nullptr)
        : QDialog(parent)
        , edit(new QLineEdit)
        , presses(new QPushButton("0"))
    {
        auto* layout = new QVBoxLayout(this);
        layout->addWidget(edit);
        layout->addWidget(presses);
        layout->addStretch();
        connect(presses, &QPushButton::clicked, presses,
            [this] { presses->setText(QString::number(presses->text().toInt() + 1)); });
        resize(400, 300);
        bringUp(*this);
        robot::click(*edit);
    }

    /// The number of presses, then the text.
    QString traces() const { return presses->text() + edit->text(); }

    QLineEdit* edit;
    QPushButton* presses;
};

enum Ending
{
    Stays,
    Closed,
    Destroyed,
    Quits
};

void happen(int ending, QWidget* window)
{
    if (ending == Closed)
        window->close();
    else if (ending == Destroyed)
        delete window;
    else if (ending == Quits)
        QCoreApplication::quit();
}

/// Runs \a play in the application's event loop, so that it can quit.
void inEventLoop(const std::function<void()>& play)
{
    QTimer::singleShot(0, qApp, [&] {
        play();
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
}

} // namespace

class TestDialogMachinery : public DialogTest
{
    Q_OBJECT

private slots:
    void theRobotsInputGoesWhereAUsersDoes()
    {
        Window behind;
        Window window;
        window.setModal(true);
        window.hide();
        bringUp(window);
        robot::click(*behind.presses);
        robot::click(*window.presses);
        robot::click(*window.edit);
        robot::write(window, QString("a") + QChar(0x4e00) + QString("B&"));
        robot::key(window, Qt::Key_Home);
        robot::key(window, Qt::Key_Z);
        QCOMPARE(behind.traces() + window.traces(), "01za" + QString(QChar(0x4e00)) + "B&");
        window.presses->setEnabled(false);
        robot::click(*window.presses);
        QCOMPARE(window.presses->text(), QString("1"));
    }

    void inputDuringAWaitIsDropped()
    {
        Window host;
        Window window;
        QString during;
        expect([&] {
            QVERIFY(QApplication::overrideCursor());
            for (const Window* one : {&host, &window})
                robot::queueClick(*one->presses);
            robot::queueKey(Qt::Key_X, "x");
        });
        const auto wait = [&] {
            const bool done = request();
            during = host.traces() + window.traces();
            return done;
        };
        QCOMPARE(callPlatform(&window, "Waiting", wait), Outcome::Done);
        QCOMPARE(during, QString("00"));
        QCoreApplication::processEvents();
        QCOMPARE(host.traces() + window.traces(), QString("00"));
        // The window takes input again afterwards, and the focus is where it was.
        robot::key(window, Qt::Key_Y);
        robot::click(*window.presses);
        QCOMPARE(window.traces(), QString("1y"));
    }

    void aNestedWaitEndsOnlyItself()
    {
        Window window;
        const auto waits = [&] {
            return !window.edit->isEnabled() && QApplication::overrideCursor()
                && window.findChild<WindowNote*>();
        };
        expect([&] {
            fixture->expect("GET", target, granted);
            QCOMPARE(callPlatform(&window, "Inner", request), Outcome::Done);
            QVERIFY(waits());
        });
        QCOMPARE(callPlatform(&window, "Outer", request), Outcome::Done);
        QVERIFY(!waits() && window.edit->hasFocus());
    }

    void aWaitTellsWhetherItsWindowIsStillThere_data()
    {
        QTest::addColumn<int>("ending");
        QTest::newRow("stays") << int(Stays);
        QTest::newRow("closed") << int(Closed);
        QTest::newRow("destroyed") << int(Destroyed);
        QTest::newRow("application quits") << int(Quits);
    }

    void aWaitTellsWhetherItsWindowIsStillThere()
    {
        QFETCH(int, ending);
        const QPointer<Window> window(new Window);
        inEventLoop([&] {
            fixture->expect("GET", target, refusal, [&] { happen(ending, window); });
            QCOMPARE(callPlatform(window, "Waiting", request),
                ending == Stays ? Outcome::Refused : Outcome::Abandoned);
            const auto never = [] { return !QTest::qVerify(false, "asked", "", __FILE__, __LINE__); };
            if (ending == Quits)
                QCOMPARE(callPlatform(window, "Waiting", never), Outcome::Abandoned);
            if (ending != Stays)
                return;
            QPointer<QWidget> part(new QWidget(window));
            fixture->expect("GET", target, granted, [&] { delete part; });
            QCOMPARE(callPlatform(part, "Waiting", request), Outcome::Abandoned);
        });
        delete window;
    }

    void noStepComesOnceTheApplicationQuits()
    {
        Window window;
        inEventLoop([&] {
            fixture->boxes().expectPrompt("text", [] { QCoreApplication::quit(); });
            QVERIFY(!showBox(QMessageBox::Information, &window, "Prompt", "text"));
            QVERIFY(!showBox(QMessageBox::Information, &window, "Prompt", "text"));
        });
        window.show(); // Qt 6 closes what is open first
        inEventLoop([&] {
            ScopedDialog<QDialog> dialog(&window);
            QTimer::singleShot(0, &window, [] { QCoreApplication::quit(); });
            QVERIFY(!dialog.run());
        });
    }

    void aSubDialogDoesNotComeUpWithoutItsParent()
    {
        Window window;
        ScopedDialog<QDialog> late(&window);
        window.close();
        QTimer::singleShot(0, &window, [] {
            if (QWidget* unexpected = QApplication::activeModalWidget())
                unexpected->close();
        });
        QVERIFY(!late.run() && !late->testAttribute(Qt::WA_WState_Created));
    }

    void aNoteFollowsItsWindow()
    {
        const QString text = "<i>A text</i> that is longer than a narrow window, and is cut there";
        Window window;
        QFont font;
        font.setPixelSize(20); // that of the machine may be small enough for all of the text
        window.setFont(font);
        auto* part = new QWidget(&window);
        part->show();
        const WindowNote onWindow(&window, text);
        const WindowNote onPart(&window, text, part);
        for (const QRect& room :
            {QRect(0, 0, 1200, 300), QRect(10, 20, 250, 400), QRect(90, 70, 1200, 200)}) {
            window.resize(room.size());
            part->setGeometry(room);
            QCoreApplication::processEvents();
            const QPair<const WindowNote*, QRect> notes[]{{&onWindow, window.rect()}, {&onPart, room}};
            for (const auto& [note, ground] : notes) {
                QVERIFY(note->isVisible() && ground.contains(note->geometry()));
                QVERIFY(qAbs(note->geometry().center().x() - ground.center().x()) <= 1);
                QVERIFY(ground.bottom() - note->geometry().bottom() < note->height());
                QCOMPARE(note->text().contains(QChar(0x2026)), room.width() < 1000);
                QCOMPARE(note->text() == text, room.width() > 1000);
                // The platform may have written it.
                QCOMPARE(note->textFormat(), Qt::PlainText);
                QVERIFY(note->toolTip().contains(text.toHtmlEscaped()));
            }
        }
    }

private:
    const QByteArray target = "/admin/mobile/1";
    const std::function<bool()> request = [] { return CloudAccountLogin::instance()->mobileVerify("1"); };

    void expect(const std::function<void()>& meanwhile)
    {
        fixture->expect("GET", target, granted, meanwhile);
    }
};

QTEST_MAIN(TestDialogMachinery)
#include "tst_dialogmachinery.moc"
