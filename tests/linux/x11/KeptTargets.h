// SPDX-License-Identifier: MIT
#pragma once

#include <map>
#include <memory>

#include "tests/linux/x11/X11Target.h"

namespace tarvik::tests {

/// One program of each kind for all tests of a suite: the start of a program takes longer than most
/// tests, and a user's programs live on as well.
class KeptTargets {
  public:
    /// A program without text that is in front or comes there. Terminals cannot be emptied, so each
    /// call starts one.
    X11Target& ready(X11Target::Kind kind, RealTimeQueue& mainQueue);
    /// Ends all of them.
    void end() { targets_.clear(); }

  private:
    std::map<X11Target::Kind, std::unique_ptr<X11Target>> targets_;
};

}  // namespace tarvik::tests
