// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace tarvik::tests {

/// The command of a message bus at `address`. The bus prints its address once it listens, and
/// starts no program of the machine.
std::vector<std::string> busDaemonAt(const std::string& address);

}  // namespace tarvik::tests
