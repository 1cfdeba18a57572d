// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace local_platform {

/// UTF-8 without control bytes that would end a text early.
bool isPlainText(const std::string& bytes);
/// The same bytes with whatever is no UTF-8 replaced by U+FFFD.
std::string cleaned(const std::string& bytes);
/// The last segment of a path of any system, cleaned; "file" where nothing usable is left.
std::string baseName(const std::string& path);
/// The items of a list joined by commas, semicolons or spaces; empty items are left out.
std::vector<std::string> listed(const std::string& joined);
/// Percent decoding; a stray '%' and '+' stand for themselves.
std::string percentDecoded(const std::string& text);
/// A positive decimal number, or -1, which is nobody's id.
long long idFrom(const std::string& text);

/// The text with each control character written out, so that it stays on one line of a log or a terminal.
std::string oneLine(const std::string& text);
/// Seconds since 1970 as 20260131T235959Z.
std::string timeText(long long time);

bool startsWith(const std::string& text, const std::string& prefix);
bool isPhone(const std::string& text);
bool isMail(const std::string& text);

} // namespace local_platform
