// SPDX-License-Identifier: MIT
#pragma once

#include <string>

// The names of IBus engines. Any thread.
namespace tarvik::linuxdesktop {

/// A new name for an engine of this process. Each connection has a name of its own: of two engines
/// with one name, IBus knows the first.
std::string nextEngineName();

/// Whether an engine is this application's, of this process or an earlier one.
bool isOwnEngine(const std::string& name);

/// Whether an engine makes other text of the keys than the keyboard layout does.
bool composes(const std::string& name);

}  // namespace tarvik::linuxdesktop
