// SPDX-License-Identifier: MIT
#pragma once

#include "ui/BlockingCall.h"

#include <QDialog>

#include <optional>

/// A dialog of ours on top of another window. On the heap, because it goes with its parent; else it goes at
/// the end of the scope.
template <class SubDialog>
class ScopedDialog
{
public:
    /// \param what what the parent's window waits for while a dialog that asks the platform is built; empty
    /// for one that does not
    /// \param arguments those of the dialog's constructor before the parent
    template <class... Arguments>
    ScopedDialog(QWidget* parentWidget, const QString& what, Arguments&&... arguments)
        : parent(parentWidget)
        , wasOpen(parent->isVisible())
    {
        std::optional<Waiting> waiting;
        if (!what.isEmpty())
            waiting.emplace(parent, what);
        dialog = new SubDialog(std::forward<Arguments>(arguments)..., parent);
    }
    ~ScopedDialog() { delete dialog; }
    ScopedDialog(const ScopedDialog&) = delete;
    ScopedDialog& operator=(const ScopedDialog&) = delete;

    SubDialog* operator->() const { return dialog; }

    /// Runs it. False when the parent was closed or went before or meanwhile: nobody waits for what follows.
    bool run()
    {
        if (!isWaitedFor())
            return false;
        result = dialog->exec();
        return isWaitedFor();
    }

    /// Runs it; whether it was accepted, and is waited for.
    bool accepted() { return run() && dialog && result == QDialog::Accepted; }

private:
    bool isWaitedFor() const { return parent && (!wasOpen || parent->isVisible()); }

    QPointer<QWidget> parent;
    bool wasOpen;
    QPointer<SubDialog> dialog;
    int result = QDialog::Rejected;
};
