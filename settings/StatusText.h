#pragma once

#include <string>

#include "platform/Views.h"

namespace tarvik {

/// Makes `label` say that something is as it should be ("✓ …" in green) or not ("✗ …" in red).
inline void showStatus(platform::Label& label, bool isGood, const std::string& text) {
    label.setText((isGood ? "✓ " : "✗ ") + text);
    label.setTextColor(isGood ? platform::SystemColor::green : platform::SystemColor::red);
}

}  // namespace tarvik
