#pragma once

#include <string>
#include <vector>

#include "tests/conformance/X11MainQueue.h"
#include "tests/conformance/X11Process.h"

namespace tarvik::conformance {

/// An X server without a window manager. As long as it lives, connections are made to it.
class X11Server {
  public:
    /// `options` are further ones of Xvfb.
    explicit X11Server(X11MainQueue& mainQueue, const std::vector<std::string>& options = {});
    ~X11Server();
    X11Server(const X11Server&) = delete;
    X11Server& operator=(const X11Server&) = delete;

    /// It answers nobody from here until it goes on.
    void hang();
    void goOn();

  private:
    X11Process process_;
    std::string earlierDisplay_;
};

}  // namespace tarvik::conformance
