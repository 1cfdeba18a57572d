// SPDX-License-Identifier: MIT
#include "Password.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <termios.h>
#include <unistd.h>

QByteArray password()
{
    if (qEnvironmentVariableIsSet("TAV_PASSWORD"))
        return qgetenv("TAV_PASSWORD");

    termios shown = {};
    const bool terminal = tcgetattr(STDIN_FILENO, &shown) == 0;
    if (terminal) {
        termios hidden = shown;
        // No signals either: an interrupted prompt would leave the terminal without its echo.
        hidden.c_lflag &= ~tcflag_t(ECHO | ISIG);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
        std::fputs("Password: ", stderr);
    }
    std::string line;
    std::getline(std::cin, line);
    if (terminal) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
        std::fputs("\n", stderr);
    }
    return QByteArray::fromStdString(line);
}
