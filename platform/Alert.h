// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace tarvik::platform {

/// The code of an alert's first button. Each further button has the next number.
inline constexpr int alertFirstButtonReturn = 1000;

/// A modal question with one line of text to edit.
struct Alert {
    std::string messageText;
    std::string informativeText;
    /// The initial text of the field, selected as a whole.
    std::string fieldText;
    std::string fieldPlaceholder;
    /// The size of the field in points.
    int fieldWidth = 0;
    int fieldHeight = 0;
    /// The titles, from first (the default button) to last.
    std::vector<std::string> buttons;
};

/// What the user answered to an alert.
struct AlertAnswer {
    /// alertFirstButtonReturn plus the button's index; 0 when the alert was closed without a
    /// button.
    int code = 0;
    /// The text of the field when the alert was answered.
    std::string fieldText;
};

}  // namespace tarvik::platform
