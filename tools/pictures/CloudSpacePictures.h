// SPDX-License-Identifier: MIT
#pragma once

class Album;
class ScriptedPeer;

/// The windows of the cloud space in their main states.
void shootCloudSpace(const Album& album, ScriptedPeer& peer);
