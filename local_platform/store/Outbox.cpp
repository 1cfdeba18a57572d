// SPDX-License-Identifier: MIT
#include "store/Outbox.h"

#include <chrono>
#include <fstream>
#include <spdlog/spdlog.h>
#include <stdexcept>

namespace local_platform {

namespace {

std::string asFileName(std::string text)
{
    for (char& c : text) {
        const bool harmless = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
            || c == '@' || c == '.' || c == '+' || c == '-';
        c = harmless ? c : '_';
    }
    return text.substr(0, 100);
}

} // namespace

Outbox::Outbox(const std::filesystem::path& directory)
    : directory_(directory)
{
    std::filesystem::create_directories(directory_);
}

void Outbox::put(const std::string& way, const std::string& recipient, const std::string& text)
{
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
    // Names sort in the order of sending.
    const std::string name =
        fmt::format("{}-{:06}-{}-{}.txt", milliseconds, count_++, way, asFileName(recipient));
    const std::filesystem::path unfinished = directory_ / ("." + name);
    std::ofstream file(unfinished);
    file << "To: " << recipient << '\n' << text;
    file.close();
    if (!file)
        throw std::runtime_error("The outbox cannot be written: " + directory_.string());
    std::filesystem::rename(unfinished, directory_ / name);
    spdlog::info("{} to {} put into {}", way, recipient, (directory_ / name).string());
}

} // namespace local_platform
