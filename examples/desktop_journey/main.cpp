// SPDX-License-Identifier: MIT
#include "Journey.h"

#include <QApplication>
#include <QFileInfo>

#include <cstdio>

int main(int argc, char* argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() == 4 && QFileInfo(arguments[1]).isReadable())
        return journey(arguments[1], arguments[2], arguments[3]);
    std::fputs("Usage: tav-desktop-journey DRAWING PICTURES OUTBOX\n", stderr);
    return 2;
}
