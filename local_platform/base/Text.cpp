// SPDX-License-Identifier: MIT
#include "base/Text.h"

#include <algorithm>
#include <ctime>
#include <nlohmann/json.hpp>

namespace local_platform {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isControlOrSpace(char c)
{
    return static_cast<unsigned char>(c) <= ' ' || c == '\x7f';
}

int hexDigit(char c)
{
    if (isDigit(c))
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

bool isPlainText(const std::string& bytes)
{
    return bytes.find('\0') == std::string::npos && cleaned(bytes) == bytes;
}

std::string cleaned(const std::string& bytes)
{
    using Json = nlohmann::json;
    return Json::parse(Json(bytes).dump(-1, ' ', false, Json::error_handler_t::replace)).get<std::string>();
}

std::string baseName(const std::string& path)
{
    std::string name = cleaned(path.substr(path.find_last_of("/\\") + 1));
    name.erase(std::remove(name.begin(), name.end(), '\0'), name.end());
    return name.empty() || name == "." || name == ".." ? "file" : name;
}

std::vector<std::string> listed(const std::string& joined)
{
    static const char separators[] = ",; \t\r\n";
    std::vector<std::string> items;
    for (std::size_t start = joined.find_first_not_of(separators); start != std::string::npos;) {
        const std::size_t end = joined.find_first_of(separators, start);
        items.push_back(joined.substr(start, end - start));
        start = joined.find_first_not_of(separators, end);
    }
    return items;
}

std::string percentDecoded(const std::string& text)
{
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = text[i] == '%' && i + 2 < text.size() ? hexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        if (low >= 0)
            i += 2;
        decoded += low >= 0 ? static_cast<char>(high * 16 + low) : text[i];
    }
    return decoded;
}

long long idFrom(const std::string& text)
{
    constexpr std::size_t digitsThatFit = 18;
    if (text.empty() || text.size() > digitsThatFit || !std::all_of(text.begin(), text.end(), isDigit))
        return -1;
    return std::stoll(text);
}

std::string oneLine(const std::string& text)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        // U+0080 to U+009F, U+2028 and U+2029 break lines or steer terminals, too.
        const bool latinControl =
            byte == 0xc2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xa0;
        const bool separator = text.compare(i, 2, "\xe2\x80") == 0 && i + 2 < text.size()
            && (text[i + 2] == '\xa8' || text[i + 2] == '\xa9');
        if (byte < ' ' || byte == 0x7f || latinControl || separator)
            line += {'\\', 'x', digits[byte / 16], digits[byte % 16]};
        else
            line += text[i];
    }
    return line;
}

std::string timeText(long long time)
{
    const auto seconds = static_cast<std::time_t>(time);
    std::tm parts = {};
    char text[32];
    return std::string(
        text, ::gmtime_r(&seconds, &parts) ? std::strftime(text, sizeof text, "%Y%m%dT%H%M%SZ", &parts) : 0);
}

bool startsWith(const std::string& text, const std::string& prefix)
{
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool isPhone(const std::string& text)
{
    const auto digits = text.begin() + (startsWith(text, "+") ? 1 : 0);
    const auto count = text.end() - digits;
    return count >= 5 && count <= 20 && std::all_of(digits, text.end(), isDigit);
}

bool isMail(const std::string& text)
{
    const std::size_t at = text.find('@');
    return at != std::string::npos && at > 0 && at + 1 < text.size()
        && text.find('@', at + 1) == std::string::npos && text.size() <= 254 && isPlainText(text)
        && std::none_of(text.begin(), text.end(), isControlOrSpace);
}

} // namespace local_platform
