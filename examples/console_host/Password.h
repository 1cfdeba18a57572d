// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

/// The password of this run: from the environment variable TAV_PASSWORD, otherwise typed at a prompt without
/// echo. Never from the argument list, which every user of the machine can read.
QByteArray password();
