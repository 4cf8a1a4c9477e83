// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "platform/StatusItem.h"

namespace tarvik::macdesktop {

/// Makes a main menu with an Edit menu in it, for the key equivalents of `items`. Main thread.
void installEditMenu(const std::string& title, const std::vector<platform::EditMenuItem>& items);

}  // namespace tarvik::macdesktop
