// SPDX-License-Identifier: MIT
#include "core/Screen.h"

#include <QGuiApplication>
#include <QScreen>

namespace {

#ifdef Q_OS_MACOS
constexpr double dotsPerInchAtScaleOne = 72.0;
#else
constexpr double dotsPerInchAtScaleOne = 96.0;
#endif

} // namespace

double dpi_scaled(double deviceIndependentLength)
{
    // Without an application this is null too: the list of screens is then empty.
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return deviceIndependentLength;
    return deviceIndependentLength * screen->logicalDotsPerInch() / dotsPerInchAtScaleOne;
}
