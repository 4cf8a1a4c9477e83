// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "platform/Views.h"

namespace tarvik {

/// Shows a status in `label`: "✓ …" in green when it is good, "✗ …" in red when it is not.
inline void showStatus(platform::Label& label, bool isGood, const std::string& text) {
    label.setText((isGood ? "✓ " : "✗ ") + text);
    label.setTextColor(isGood ? platform::SystemColor::green : platform::SystemColor::red);
}

}  // namespace tarvik
