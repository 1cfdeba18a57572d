// SPDX-License-Identifier: MIT
#pragma once

#include "ui/BlockingCall.h"

#include <QDialog>

namespace tav {

/// A dialog of the module on top of another window. On the heap, because its parent may destroy it; otherwise
/// it is destroyed at the end of the scope.
template <class SubDialog>
class ScopedDialog
{
public:
    /// \param arguments those of the dialog's constructor before the parent
    template <class... Arguments>
    explicit ScopedDialog(QWidget* parent, Arguments&&... arguments)
        : attendance(parent)
        , dialog(new SubDialog(std::forward<Arguments>(arguments)..., parent))
    {
    }
    ~ScopedDialog() { delete dialog; }
    ScopedDialog(const ScopedDialog&) = delete;
    ScopedDialog& operator=(const ScopedDialog&) = delete;

    SubDialog* operator->() const { return dialog; }

    /// Runs it. False when the parent was closed or destroyed before or meanwhile, or the application quits:
    /// nobody waits for what follows.
    bool run()
    {
        if (!attendance.lasts())
            return false;
        result = dialog->exec();
        const bool quits = dialog && dialog->isVisible();
        return !quits && attendance.lasts();
    }

    /// Runs it. True when it was accepted and somebody waits for what follows.
    bool accepted() { return run() && dialog && result == QDialog::Accepted; }

private:
    Attendance attendance;
    QPointer<SubDialog> dialog;
    int result = QDialog::Rejected;
};

} // namespace tav
