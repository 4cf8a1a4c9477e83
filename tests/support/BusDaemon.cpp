// SPDX-License-Identifier: MIT

#include "tests/support/BusDaemon.h"

namespace tarvik::tests {

std::vector<std::string> busDaemonAt(const std::string& address) {
    // A test may have a PATH of its own.
    return {"/usr/bin/dbus-daemon",
            "--config-file=" TARVIK_BUS_CONFIG,
            "--nofork",
            "--nopidfile",
            "--print-address=1",
            "--address=" + address};
}

}  // namespace tarvik::tests
