// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

namespace local_platform {

[[noreturn]] void throwSystemError(int error, const std::string& what);
/// Returns when the names in the directory are on the disk.
void syncDirectory(const std::filesystem::path& directory);
/// Returns when the file's content is on the disk.
void syncFile(const std::filesystem::path& file);
/// Writes the file so that it is there as a whole or not at all.
void writeWhole(const std::filesystem::path& file, const std::string& content);
/// Copies a plain file to a name that is not taken; the copy is on the disk when this returns.
void copyDurably(const std::filesystem::path& from, const std::filesystem::path& to);

} // namespace local_platform
