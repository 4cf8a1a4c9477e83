// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "tests/support/RealTimeQueue.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// An X server without a window manager. As long as it lives, connections are made to it.
class X11Server {
  public:
    /// `options` are further ones of Xvfb.
    explicit X11Server(RealTimeQueue& mainQueue, const std::vector<std::string>& options = {});
    ~X11Server();
    X11Server(const X11Server&) = delete;
    X11Server& operator=(const X11Server&) = delete;

    /// It answers nobody from here until it goes on.
    void hang();
    void goOn();

  private:
    TestProcess process_;
    std::string earlierDisplay_;
};

}  // namespace tarvik::tests
