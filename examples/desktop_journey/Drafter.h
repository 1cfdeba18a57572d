// SPDX-License-Identifier: MIT
#pragma once

#include <QtTest>
#include <QtWidgets>

#include <stdexcept>

/// What a drafter did not find on the screen, or found to be otherwise.
struct Astray : std::runtime_error
{
    explicit Astray(const QString& what)
        : std::runtime_error(what.toStdString())
    {
    }
};

/// Sees and does what a user can in the window that is in front: finds things by their texts, waits for them
/// to be there and enabled, and is Astray when that takes too long.
///
/// Lives on a thread of its own, beside the GUI thread: a dialog's event loop does not hold it up.
class Drafter
{
public:
    Drafter(QWidget* mainWindow, const QString& picturesFolder)
        : window(mainWindow)
        , pictures(picturesFolder)
    {
    }

    /// Sees that it is there, and nothing else.
    void see(const QString& text) { untilUsable<QLabel>(text); }
    void press(const QString& button)
    {
        untilUsable<QAbstractButton>(button, [](auto* one) { return soon(one, "click"); });
    }
    void type(const QString& field, const QString& text)
    {
        untilUsable<QLineEdit>(field, [&](auto* edit) { return edit->setText(text), true; });
    }
    /// An action of the main window.
    void choose(const QString& action)
    {
        until(action, [&] {
            for (QAction* one : window->findChildren<QAction*>()) {
                if (front() == window && one->isEnabled() && plain(one->text()) == action)
                    return soon(one, "trigger");
            }
            return false;
        });
    }
    void open(const QString& tab)
    {
        untilUsable<QTabBar>(QString(), [&](auto* bar) {
            for (int i = 0; i < bar->count(); ++i) {
                if (bar->tabText(i) == tab)
                    return bar->setCurrentIndex(i), true;
            }
            return false;
        });
    }
    void clickRowOf(const QString& cell)
    {
        untilUsable<QTableWidget>(QString(), [&](auto* table) {
            QTableWidgetItem* item = table->findItems(cell, Qt::MatchExactly).value(0);
            if (!item)
                return false;
            const QPoint place = table->visualItemRect(item).center();
            QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
            return true;
        });
    }
    void acceptFolder(const QString& path)
    {
        until("a folder dialog", [&] {
            auto* dialog = qobject_cast<QFileDialog*>(front());
            return dialog && (dialog->selectFile(path), soon(dialog, "accept"));
        });
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
        until("an end of the message \"" + text + '"', [&] { return !isThere(); });
        return read.mid(text.size());
    }
    void close()
    {
        untilUsable<QTabBar>(QString(), [&](auto*) { return front() != window && soon(front(), "close"); });
    }
    /// Takes a picture of the window in front.
    void picture(const QString& name)
    {
        const auto take = [&] {
            const auto number = QString::number(++pictureCount).rightJustified(2, '0');
            return front()->grab().save(pictures + '/' + number + '-' + name + ".png");
        };
        until("a place for " + name, take);
    }

private:
    /// Without what a label has beside the name.
    static QString plain(QString text) { return text.remove('&').remove("...").remove(':'); }

    /// Not now: what it opens would not return before it is closed again.
    static bool soon(QObject* target, const char* slot)
    {
        return QMetaObject::invokeMethod(target, slot, Qt::QueuedConnection);
    }

    QWidget* front() const
    {
        QWidget* modal = QApplication::activeModalWidget();
        return modal ? modal : window;
    }

    /// By what it says itself, what its label says, or what the group says that it is in.
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

    /// Waits for a widget that can be seen and used and that \a act, in the GUI thread, finds fit.
    /// \param name what it is called; empty for any
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

    /// Asks between two events of the GUI thread, whichever of its event loops runs, until it \a isSo.
    void until(const QString& what, const std::function<bool()>& isSo)
    {
        const auto ask = [](const std::function<bool()>& question) {
            bool answer = false;
            QMetaObject::invokeMethod(qApp, question, Qt::BlockingQueuedConnection, &answer);
            return answer;
        };
        for (const QDeadlineTimer patience(20000); !ask(isSo); QThread::msleep(5)) {
            if (!patience.hasExpired())
                continue;
            QString seen;
            ask([&] {
                seen = front()->windowTitle() + ' ' + front()->property("text").toString();
                return front()->grab().save(pictures + "/astray.png");
            });
            throw Astray("there is no sign of " + what + "; in front is \"" + seen + '"');
        }
    }

    QWidget* window;
    QString pictures;
    int pictureCount = 0;
};
