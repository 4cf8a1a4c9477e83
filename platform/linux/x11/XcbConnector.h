// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "base/Result.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Connects to the X server in a way that can be cancelled. Any thread.
class XcbConnector {
  public:
    using Connected = Result<std::unique_ptr<XcbConnection>>;

    XcbConnector();

    /// Waits for the server, or until cancel() is called. An error when there is no server, or no
    /// thread to wait on. To be called once.
    Connected connect();
    /// Lets connect() answer with an error; without effect once connect() has ended.
    void cancel();

  private:
    struct Answer;

    std::shared_ptr<Answer> answer_;
};

}  // namespace tarvik::linuxdesktop
