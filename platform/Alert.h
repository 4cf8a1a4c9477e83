#pragma once

#include <string>
#include <vector>

namespace tarvik::platform {

/// The first button of an alert answers this, the second one more.
inline constexpr int alertFirstButtonReturn = 1000;

/// A modal question with one line of text to edit.
struct Alert {
    std::string messageText;
    std::string informativeText;
    /// What the field holds at first; it is selected as a whole.
    std::string fieldText;
    std::string fieldPlaceholder;
    /// In points.
    int fieldWidth = 0;
    int fieldHeight = 0;
    /// From first (the default) to last.
    std::vector<std::string> buttons;
};

struct AlertAnswer {
    /// alertFirstButtonReturn plus the number of the button; 0 when the alert was closed otherwise.
    int code = 0;
    /// What the field held when the alert was answered.
    std::string fieldText;
};

}  // namespace tarvik::platform
