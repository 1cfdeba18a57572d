// SPDX-License-Identifier: MIT
#pragma once

void SendLogInfo(const char* text, int level);
