// SPDX-License-Identifier: MIT
#pragma once

#include "cloud/CloudFileManger.h"

namespace tav {

/// A second client on the same members, where a copy would be independent: what one changes, the other has.
/// It stays usable when the host destroys its own, so a dialog works with a handle, and so does a request
/// that may outlast the dialog.
using CloudHandle = std::shared_ptr<CloudFileManger>;

CloudHandle handleOn(const CloudFileManger* client);

} // namespace tav
