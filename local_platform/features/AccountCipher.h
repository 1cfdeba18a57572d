// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace local_platform {

/// The form in which clients send a password: AES-128-CBC under a key that is also the initialisation vector,
/// in Base64. A text whose length is a multiple of 16 bytes gets no padding, any other the PKCS #7 padding.
std::string clientCipherText(const std::string& password, const std::string& key);

} // namespace local_platform
