// SPDX-License-Identifier: MIT
#pragma once

#include <QtTest>
#include <QtWidgets>

#include <stdexcept>

/// A step of the journey that failed: something is not on the screen, or not as it should be.
struct JourneyFailure : std::runtime_error
{
    explicit JourneyFailure(const QString& what)
        : std::runtime_error(what.toStdString())
    {
    }
};

/// Plays a user in the window that is in front: finds widgets by their texts, waits for them to be there and
/// enabled, and throws JourneyFailure when that takes too long. Mouse and key events go to the window, which
/// delivers them to what is under the pointer or has the focus.
///
/// Use it on a thread of its own, beside the GUI thread: the event loop of a dialog does not block it.
class Drafter
{
public:
    Drafter(QMainWindow* mainWindow, const QString& picturesFolder)
        : window(mainWindow)
        , pictures(picturesFolder)
    {
    }

    /// Waits for a label with that text.
    void see(const QString& text) { untilUsable<QLabel>(text); }
    void seeNo(const QString& button)
    {
        until("the end of " + button, [&] {
            for (const auto* one : front()->findChildren<QAbstractButton*>()) {
                if (one->isVisible() && isCalled(one, button))
                    return false;
            }
            return true;
        });
    }
    void press(const QString& button)
    {
        untilUsable<QAbstractButton>(button, [](auto* one) { return clicked(one, one->rect().center()); });
    }
    void type(const QString& field, const QString& text)
    {
        bool typed = false;
        untilUsable<QLineEdit>(field, [&](auto* edit) {
            if (typed)
                return edit->text() == text;
            const QWidget* taker = edit->focusProxy() ? edit->focusProxy() : edit;
            if (edit->window()->focusWidget() != taker)
                return clicked(edit, edit->rect().center()) && false;
            typed = true;
            soon([handle = windowOf(edit), text] { replaceText(handle, text); });
            return false;
        });
    }
    /// Triggers an action of the main window by its tool bar.
    void choose(const QString& action)
    {
        const auto* bar = window->findChild<QToolBar*>();
        until(action, [&] {
            for (QAction* one : bar->actions()) {
                if (front() == window && one->isEnabled() && plain(one->text()) == action)
                    return clicked(bar->widgetForAction(one), bar->widgetForAction(one)->rect().center());
            }
            return false;
        });
    }
    void awaitEnabled(const QString& action)
    {
        until(action, [&] {
            for (const QAction* one : window->findChild<QToolBar*>()->actions()) {
                if (one->isEnabled() && plain(one->text()) == action)
                    return true;
            }
            return false;
        });
    }
    void open(const QString& tab)
    {
        untilUsable<QTabBar>(QString(), [&](auto* bar) {
            for (int i = 0; i < bar->count(); ++i) {
                if (bar->tabText(i) == tab)
                    return clicked(bar, bar->tabRect(i).center());
            }
            return false;
        });
    }
    /// Clicks a row of a table or a tree.
    /// \param cell how the text of one of its cells begins
    /// \param branch where to look in a tree; empty for all of it
    void clickRow(const QString& cell, const QString& branch = QString())
    {
        untilUsable<QAbstractItemView>(QString(), [&](auto* view) {
            const QModelIndex index = indexOf(*view->model(), cell, branch);
            view->scrollTo(index);
            return index.isValid() && clicked(view->viewport(), view->visualRect(index).center());
        });
    }
    void seeRow(const QString& cell, bool isThere = true)
    {
        untilUsable<QAbstractItemView>(
            QString(), [&](auto* view) { return indexOf(*view->model(), cell, {}).isValid() == isThere; });
    }
    /// Presses the button of a message box that begins with \a text, and returns what follows that.
    QString confirm(const QString& text, const QString& pictureName = QString())
    {
        QString read;
        const auto isThere = [&] {
            const auto* box = qobject_cast<const QMessageBox*>(front());
            const bool so = box && box->text().startsWith(text);
            return so && (read = box->text(), true);
        };
        until("the message \"" + text + '"', isThere);
        if (!pictureName.isEmpty())
            picture(pictureName);
        press("OK");
        until("the end of the message \"" + text + '"', [&] { return !isThere(); });
        return read.mid(text.size());
    }
    /// Closes the cloud space.
    void close()
    {
        untilUsable<QTabBar>(QString(),
            [&](auto* bar) { return front() != window && (soon([bar] { bar->window()->close(); }), true); });
        until("the main window", [&] { return front() == window; });
    }
    QString copied()
    {
        QString text;
        until("the clipboard", [&] { return text = QApplication::clipboard()->text(), true; });
        return text;
    }
    /// Takes a picture of the window in front.
    void picture(const QString& name)
    {
        const auto take = [&] {
            const auto number = QString::number(++pictureCount).rightJustified(2, '0');
            return front()->grab().save(pictures + '/' + number + '-' + name + ".png");
        };
        until("a writable folder for " + name, take);
    }

    /// Evaluates \a isSo in the GUI thread, between two events of whichever event loop runs there, until it
    /// is true. Throws JourneyFailure after a minute.
    void until(const QString& what, const std::function<bool()>& isSo)
    {
        const auto ask = [](const std::function<bool()>& question) {
            bool answer = false;
            QMetaObject::invokeMethod(qApp, question, Qt::BlockingQueuedConnection, &answer);
            return answer;
        };
        for (const QDeadlineTimer deadline(60000); !ask(isSo); QThread::msleep(5)) {
            if (!deadline.hasExpired())
                continue;
            QString seen;
            ask([&] {
                seen = front()->windowTitle() + ' ' + front()->property("text").toString();
                return front()->grab().save(pictures + "/failure.png");
            });
            throw JourneyFailure("waited in vain for " + what + "; in front is \"" + seen + '"');
        }
    }

private:
    /// The text of a label or an action without mnemonic, ellipsis and colon.
    static QString plain(QString text) { return text.remove('&').remove("...").remove(':'); }

    /// Queues \a action: one that opens a dialog would not return before the dialog is closed.
    static void soon(const std::function<void()>& action)
    {
        QMetaObject::invokeMethod(qApp, action, Qt::QueuedConnection);
    }

    static QPointer<QWindow> windowOf(const QWidget* widget) { return widget->window()->windowHandle(); }

    /// Queues a click at \a at. False when another widget is in the way, or a pop-up, which the click closes.
    static bool clicked(QWidget* widget, const QPoint& at)
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest); // or it moves before the click
        const QPoint place = widget->mapTo(widget->window(), at);
        const QWidget* hit = widget->window()->childAt(place);
        const QPointer<QWindow> handle = windowOf(widget);
        if (!handle || !handle->isExposed() || (hit != widget && !widget->isAncestorOf(hit)))
            return false;
        soon([=] {
            if (handle)
                QTest::mouseClick(handle, Qt::LeftButton, Qt::NoModifier, place);
        });
        return !QApplication::activePopupWidget();
    }

    static void replaceText(const QPointer<QWindow>& handle, const QString& text)
    {
        if (handle)
            QTest::keyClick(handle, Qt::Key_A, Qt::ControlModifier);
        for (const QChar letter : text) {
            if (handle)
                qt_handleKeyEvent(handle, QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, letter);
        }
    }

    static QModelIndex indexOf(const QAbstractItemModel& model, const QString& cell, const QString& branch)
    {
        const auto flags = Qt::MatchStartsWith | Qt::MatchCaseSensitive | Qt::MatchRecursive;
        const QModelIndex below = branch.isEmpty() ? QModelIndex() : indexOf(model, branch, {});
        for (int column = 0; column < model.columnCount(below); ++column) {
            const QModelIndex found =
                model.match(model.index(0, column, below), Qt::DisplayRole, cell, 1, flags).value(0);
            if (found.isValid() && (branch.isEmpty() || found.parent() == below))
                return found;
        }
        return QModelIndex();
    }

    QWidget* front() const
    {
        QWidget* modal = QApplication::activeModalWidget();
        return modal ? modal : window;
    }

    /// Whether \a name is the text of \a widget, its accessible name, its label's text or its group's title.
    bool isCalled(const QWidget* widget, const QString& name) const
    {
        for (const char* property : {"text", "accessibleName"}) {
            const QString text = widget->property(property).toString();
            if (text == name || plain(text) == name)
                return true;
        }
        for (const QLabel* label : front()->findChildren<QLabel*>()) {
            if (label->buddy() && plain(label->text()) == name
                && (label->buddy() == widget || label->buddy() == widget->parentWidget()))
                return true;
        }
        const auto* group = qobject_cast<const QGroupBox*>(widget->parentWidget());
        return group && group->title() == name;
    }

    /// Waits for a visible, enabled widget for which \a act, in the GUI thread, returns true.
    /// \param name the widget's, as isCalled() has it; empty for any
    template <class Widget>
    void untilUsable(
        const QString& name, const std::function<bool(Widget*)>& act = [](Widget*) { return true; })
    {
        until(QString(Widget::staticMetaObject.className()) + " \"" + name + '"', [&] {
            for (Widget* one : front()->template findChildren<Widget*>()) {
                if (one->isVisible() && one->isEnabled() && one->window() == front()
                    && (name.isEmpty() || isCalled(one, name)) && act(one))
                    return true;
            }
            return false;
        });
    }

    QMainWindow* window;
    QString pictures;
    int pictureCount = 0;
};
