// SPDX-License-Identifier: MIT
#pragma once

class QString;

/// Two drafters, alice and bob, share drawings at the windows of the desktop host, and what they download is
/// compared with what they shared. Needs a QApplication and a platform with its demo accounts; neither may
/// have the other in the address book. Accounts are remembered in the working folder.
///
/// \param drawing what to share; any file
/// \param pictures a folder for pictures of the windows, made when it is missing
/// \return 0, or 1 when something was not as it should be, which it then says on standard error
int journey(const QString& drawing, const QString& pictures);
