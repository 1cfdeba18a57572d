// SPDX-License-Identifier: MIT
// A line between a client and a server on this machine, to see how something behaves over it:
//   tav-line SERVER_PORT MBIT_PER_SECOND DELAY_MS [PORT]
#include "support/Line.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

int main(int argc, char* argv[])
{
    if (argc != 4 && argc != 5)
        return std::fprintf(stderr, "tav-line SERVER_PORT MBIT_PER_SECOND DELAY_MS [PORT]\n"), 1;
    std::signal(SIGPIPE, SIG_IGN);
    LineSettings settings;
    settings.bitsPerSecond = std::atof(argv[2]) * 1e6;
    settings.delay = std::chrono::milliseconds(std::atoi(argv[3]));
    const Line line(
        std::uint16_t(std::atoi(argv[1])), settings, std::uint16_t(argc == 5 ? std::atoi(argv[4]) : 0));
    std::printf("http://127.0.0.1:%d\n", line.port());
    std::fflush(stdout);
    ::pause();
}
