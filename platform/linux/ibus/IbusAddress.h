// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>

#include "base/Result.h"

namespace tarvik::linuxdesktop {

/// The address of the bus on which IBus serves this session, as IBus itself publishes the address
/// in a file. Reads a small file.
Result<std::string> ibusAddress();

/// The file in which IBus publishes the address, or would; empty where the environment has the
/// address itself.
std::filesystem::path ibusAddressFile();

}  // namespace tarvik::linuxdesktop
