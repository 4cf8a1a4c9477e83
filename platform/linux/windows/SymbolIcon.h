#pragma once

#include <QColor>
#include <QIcon>
#include <optional>
#include <string>

namespace tarvik::linuxdesktop {

/// The pictures that the status item can show.
enum class Symbol { microphone, filledMicrophone };

/// The symbol as an icon that is drawn anew at every size, in `color` or, without one, in a light
/// line along a dark one, of which a panel of any colour shows at least one.
QIcon symbolIcon(Symbol symbol, const std::optional<QColor>& color);

/// A short text as such an icon.
QIcon textIcon(const std::string& text, const std::optional<QColor>& color);

}  // namespace tarvik::linuxdesktop
