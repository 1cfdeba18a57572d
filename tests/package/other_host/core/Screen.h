// SPDX-License-Identifier: MIT
#pragma once

double dpi_scaled(double length);
