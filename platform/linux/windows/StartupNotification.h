#pragma once

#include <cstdint>
#include <string_view>

namespace tarvik::linuxdesktop {

/// When the user did what `startupId` names, as the X server counts time; 0 when it does not say.
std::uint32_t timeOfStartup(std::string_view startupId);

/// Tells the desktop that what `startupId` names has been done, so that it ends its busy cursor.
/// Nothing happens without an id or without an X server. Main thread; does not wait.
void endStartupNotification(std::string_view startupId);

}  // namespace tarvik::linuxdesktop
