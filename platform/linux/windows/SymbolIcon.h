// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QIcon>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// The symbols of the status item. Main thread only, as the two functions below.
enum class Symbol { microphone, filledMicrophone };

/// The symbol as an icon that is drawn for each size. Without a `color` the symbol is a light line
/// within a dark one: on a panel of any colour at least one of the two is visible.
QIcon symbolIcon(Symbol symbol, const std::optional<QColor>& color);

/// A short text as an icon, drawn in the same way.
QIcon textIcon(const std::string& text, const std::optional<QColor>& color);

}  // namespace tarvik::linuxdesktop
