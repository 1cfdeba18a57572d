// SPDX-License-Identifier: MIT
#pragma once

class Album;
class ScriptedPeer;

/// Takes pictures of the windows of the cloud space in their main states.
void shootCloudSpace(const Album& album, ScriptedPeer& peer);
