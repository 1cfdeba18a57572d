// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace local_platform {

/// The one form of a name (Unicode NFC) in which it is kept and shown.
std::string inOneForm(const std::string& name);
/// The form in which names are compared: two that differ by case or by composition alone are the same.
std::string comparable(const std::string& name);
/// What the name looks like: two that a person cannot tell apart have the same skeleton.
std::string skeletonOf(const std::string& name);
/// Whether the name has characters that cannot be seen, or mixes scripts whose letters look alike.
bool canDeceive(const std::string& name);

} // namespace local_platform
