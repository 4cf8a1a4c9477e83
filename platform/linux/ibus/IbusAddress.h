// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "base/Result.h"

namespace tarvik::linuxdesktop {

/// The address of the bus on which IBus serves this session, as IBus itself publishes the address
/// in a file. Reads a small file.
Result<std::string> ibusAddress();

}  // namespace tarvik::linuxdesktop
