// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <span>
#include <string>
#include <string_view>

namespace tarvik::linuxdesktop {

/// A line of the core's texts that would be false on Linux, and the line that is shown there.
struct LinuxText {
    std::string_view coreLine;
    std::string_view shownLine;
};

/// Every line that is replaced. Each `coreLine` is a whole line of a text of the core.
std::span<const LinuxText> linuxTexts();

/// A text of the core as Linux shows it: with the lines of linuxTexts() replaced, and all other
/// lines as they are. Any thread.
QString shownText(const std::string& coreText);

}  // namespace tarvik::linuxdesktop
