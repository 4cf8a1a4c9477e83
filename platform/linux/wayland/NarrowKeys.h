// SPDX-License-Identifier: MIT
#pragma once

#include "platform/Workspace.h"

namespace tarvik::linuxdesktop {

/// Whether a program that speaks Wayland cuts each typed character to 16 bits, and so makes another
/// character of an emoji. Everything that is made from Chromium does. Reads a few file names.
bool hasNarrowKeys(platform::ProcessIdentifier process);

}  // namespace tarvik::linuxdesktop
