// SPDX-License-Identifier: MIT
#include "support/CloudSpaceFixture.h"

#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>

namespace {

constexpr char playedProperty[] = "playedByFixture";

/// The texts of \a window that Qt takes for markup.
QStringList takenForMarkup(const QWidget& window)
{
    QStringList found;
    for (const auto* label : window.findChildren<QLabel*>())
        if (label->textFormat() != Qt::PlainText && label->text().contains("<i>"))
            found.append(label->text());
    QStringList toolTips;
    for (const auto* widget : window.findChildren<QWidget*>()) {
        toolTips.append(widget->toolTip());
        const auto* view = qobject_cast<const QAbstractItemView*>(widget);
        const QModelIndexList all = view && view->model() && view->objectName().isEmpty()
            ? view->model()->match(view->model()->index(0, 0), Qt::ToolTipRole, "<i>", -1,
                Qt::MatchContains | Qt::MatchRecursive)
            : QModelIndexList();
        for (const QModelIndex& index : all)
            toolTips.append(index.data(Qt::ToolTipRole).toString());
    }
    return found + toolTips.filter("<i>"); // which is "&lt;i&gt;" where it is to be seen
}

} // namespace

void CloudSpaceFixture::begin()
{
    DialogFixture::begin();
    sent.clear();
    scheduled = came = 0;
    isOver = false;
    // A client that is made with a project asks the platform at once.
    manager = std::make_unique<CloudFileManger>(CloudAccountLogin::instance()->getUrl(), "token", QString(),
        "Soft", QStringList(), ".bak", "Current", QString());
    manager->setProjectID("7");
}

QStringList CloudSpaceFixture::finish()
{
    const QVector<RecordedRequest> requested = requests();
    for (int i = 0; i < qMin(sent.size(), requested.size()); ++i) {
        const QByteArray received = requested[i].header("Authorization") + ' ' + contentOf(requested[i]);
        if (!sent[i].content.isNull() && received != "Bearer token " + sent[i].content)
            wrong.append(sent[i].what + " came with: " + received);
    }
    wrong += DialogFixture::finish();
    for (const auto& [poll, title] : std::exchange(awaited, {})) {
        poll->stop();
        wrong.append("never came: " + title);
    }
    if (isOver)
        wrong = wrong.filter(QRegularExpression("^(?!never came)"));
    return std::exchange(wrong, {});
}

void CloudSpaceFixture::expect(const Steps& steps, const std::function<void()>& meanwhile)
{
    for (const Step& step : steps) {
        const auto reach = [=, turn = scheduled++] {
            if (turn != came)
                wrong.append("came out of its turn: " + step.what);
            came = turn + 1;
            for (const QWidget* window : QApplication::topLevelWidgets())
                for (const QString& text : takenForMarkup(*window))
                    wrong.append("taken for markup: " + text);
            if (meanwhile)
                meanwhile();
        };
        if (!step.method.isEmpty()) {
            DialogFixture::expect(step.method, step.what.toUtf8(), step.answer, [=] {
                sent.append(step);
                reach();
            });
        } else if (!step.box.text.isEmpty()) {
            ExpectedBox expected = step.box;
            expected.look = [=] {
                const auto* shown = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                QCOMPARE(shown->defaultButton(), shown->button(no));
                if (step.box.look)
                    step.box.look();
                reach();
            };
            boxes().expect(expected);
        } else {
            whenOpened(step.what, [=](QDialog& opened) {
                const QPointer<QDialog> window(&opened);
                reach();
                act(window, step.acts);
                if (window && window->isVisible() && !isOver)
                    wrong.append("left open: " + step.what);
            });
        }
    }
}

void CloudSpaceFixture::expectNothing()
{
    DialogFixture::expectNothing();
    came = scheduled;
    isOver = true;
}

void CloudSpaceFixture::act(const QPointer<QDialog>& window, const Acts& acts) const
{
    for (const Act& one : acts)
        if (window && !isOver)
            one(*window);
}

std::unique_ptr<QDialog> CloudSpaceFixture::open(const Make& make, const Steps& steps)
{
    expect(steps);
    std::unique_ptr<QDialog> dialog(make(manager.get(), nullptr));
    dialog->show();
    QCoreApplication::processEvents(); // in which it loads
    bringUp(*dialog);
    return dialog;
}

/// Runs \a play on the dialog titled \a title once it is there, and closes it afterwards. Dialogs must come
/// up in the order of the calls.
void CloudSpaceFixture::whenOpened(const QString& title, const std::function<void(QDialog&)>& play)
{
    // A timer for each dialog: one whose play is running does not fire again.
    auto* poll = new QTimer(&polls);
    awaited.append({poll, title});
    QObject::connect(poll, &QTimer::timeout, [this, poll, title, play] {
        const QPointer<QDialog> dialog(qobject_cast<QDialog*>(QApplication::activeModalWidget()));
        const bool mine = awaited.first().first == poll;
        if (!mine || !dialog || !dialog->isVisible() || dialog->windowTitle() != title
            || dialog->property(playedProperty).toBool())
            return;
        // A dialog that has just come up may still be loading its contents.
        if (QApplication::overrideCursor() && QApplication::overrideCursor()->shape() == Qt::WaitCursor)
            return;
        poll->stop();
        awaited.removeFirst();
        dialog->setProperty(playedProperty, true);
        robot::waitForFront(*dialog);
        QCoreApplication::processEvents();
        if (!dialog)
            return;
        play(*dialog);
        if (dialog)
            dialog->close();
    });
    poll->start(1);
}
