// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudFileManger.h"

namespace tav {

/// A second client that shares the members of the first, where a copy would be independent. It stays usable
/// when the host destroys its own client, so dialogs work with a handle, as do requests that may outlast
/// their dialog.
using CloudHandle = std::shared_ptr<CloudFileManger>;

CloudHandle handleOn(const CloudFileManger* client);

} // namespace tav
