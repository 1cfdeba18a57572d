// SPDX-License-Identifier: MIT
#pragma once

class QString;

/// Three drafters at the windows of the desktop host. Alice and bob share drawings, and what they download is
/// compared with what they shared; dora registers by phone, signs in by a code and with a new password. Needs
/// a QApplication and a platform with its demo accounts; neither of the first two may have the other in the
/// address book, and there may be no account dora yet. Accounts are remembered in the working folder.
///
/// \param drawing what to share; any file
/// \param pictures a folder for pictures of the windows, made when it is missing
/// \param outbox the folder into which the platform puts the codes that it sends
/// \return 0, or 1 when something was not as it should be, which it then says on standard error
int journey(const QString& drawing, const QString& pictures, const QString& outbox);
