// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

#include "base/Result.h"

namespace tarvik::service {

/// The listening sockets that a service manager has opened for this process, by the protocol of
/// LISTEN_PID and LISTEN_FDS. Empty where there are none.
///
/// The caller owns the descriptors. An error names the first descriptor that is not a listening TCP
/// socket. To be called once, before the process has threads: both variables are removed, so that
/// no child process takes the sockets for its own.
Result<std::vector<int>> takeHandedSockets();

}  // namespace tarvik::service
