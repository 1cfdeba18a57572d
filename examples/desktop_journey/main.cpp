// SPDX-License-Identifier: MIT
#include "Journey.h"

#include <QApplication>
#include <QFileInfo>

#include <cstdio>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() == 3 && QFileInfo(arguments[1]).isReadable())
        return journey(arguments[1], arguments[2]);
    std::fputs("Usage: tav-desktop-journey DRAWING PICTURES\n", stderr);
    return 2;
}
