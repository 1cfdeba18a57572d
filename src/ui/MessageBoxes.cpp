// SPDX-License-Identifier: MIT
#include "ui/MessageBoxes.h"

#include "ui/BlockingCall.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QShortcut>

namespace tav {

namespace {

/// The normal cursor for a box that comes up during a wait: it can be used.
class PlainCursor
{
public:
    PlainCursor() { QApplication::setOverrideCursor(Qt::ArrowCursor); }
    ~PlainCursor() { QApplication::restoreOverrideCursor(); }
    PlainCursor(const PlainCursor&) = delete;
    PlainCursor& operator=(const PlainCursor&) = delete;
};

/// On the heap, because a window destroys its boxes. A window that is still being built cannot be seen: its
/// box gets the next visible window below as its parent, or the active one.
QPointer<QMessageBox> newBox(
    QMessageBox::Icon icon, QWidget* window, const QString& title, const QString& text, const QString& more)
{
    QWidget* parent = window;
    while (parent && !parent->isVisible())
        parent = parent->parentWidget();
    if (!parent)
        parent = QApplication::activeWindow();
    QPointer<QMessageBox> box(new QMessageBox(icon, title, text, QMessageBox::NoButton, parent));
    box->setTextFormat(Qt::PlainText);
    if (more.isEmpty())
        return box;
    box->setInformativeText(more);
    // The box's own format does not apply to this label.
    box->findChild<QLabel*>("qt_msgbox_informativelabel")->setTextFormat(Qt::PlainText);
    return box;
}

QPushButton* addButton(QMessageBox* box, QMessageBox::StandardButton which, const QString& text)
{
    QPushButton* button = box->addButton(which);
    if (!text.isEmpty())
        button->setText(text);
    return button;
}

/// Runs and deletes \a box; \a answer becomes the button pressed. False when nobody waits for the answer any
/// more, which includes that the application quits: that ends a box without closing it.
bool isAnswered(const QPointer<QMessageBox>& box, const Attendance& attendance, int& answer)
{
    const PlainCursor cursor;
    answer = box->exec();
    const bool quits = box && box->isVisible();
    delete box;
    return !quits && attendance.lasts();
}

} // namespace

bool showBox(QMessageBox::Icon icon, QWidget* window, const QString& title, const QString& text,
    const QString& button, const QString& more)
{
    const Attendance attendance(window);
    if (!attendance.lasts())
        return false;
    const QPointer<QMessageBox> box = newBox(icon, window, title, text, more);
    addButton(box, QMessageBox::Ok, button);
    int answer = 0;
    return isAnswered(box, attendance, answer);
}

bool showCode(QWidget* window, const QString& title, const QString& text, const QString& code)
{
    const Attendance attendance(window);
    if (!attendance.lasts())
        return false;
    const QPointer<QMessageBox> box = newBox(QMessageBox::Information, window, title, text, QString());
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    addButton(box, QMessageBox::Ok, QString());
    auto* copy = new QShortcut(QKeySequence::Copy, box);
    QObject::connect(
        copy, &QShortcut::activated, box, [code] { QGuiApplication::clipboard()->setText(code); });
    int answer = 0;
    return isAnswered(box, attendance, answer);
}

bool askBox(QMessageBox::Icon icon, QWidget* window, const QString& title, const QString& text,
    const QString& proceed, const QString& cancel, const QString& more)
{
    const Attendance attendance(window);
    if (!attendance.lasts())
        return false;
    const QPointer<QMessageBox> box = newBox(icon, window, title, text, more);
    addButton(box, QMessageBox::Ok, proceed);
    box->setDefaultButton(addButton(box, QMessageBox::Cancel, cancel));
    int answer = 0;
    return isAnswered(box, attendance, answer) && answer == QMessageBox::Ok;
}

} // namespace tav
