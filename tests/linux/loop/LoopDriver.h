// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/linux/loop/EventLoop.h"

namespace tarvik::tests {

/// One of the event loops, run on the thread of the test.
class LoopDriver {
  public:
    virtual ~LoopDriver() = default;

    virtual linuxdesktop::EventLoop& loop() = 0;

    /// Runs the loop until `condition` holds, which is read after each turn; false when it does not
    /// hold within `timeout`.
    bool runUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds timeout = std::chrono::seconds(10));

    /// Runs the loop until all that is due now has been called.
    void runTurn();

  private:
    virtual void runWhile(const std::function<bool()>& condition) = 0;
};

struct LoopKind {
    std::string name;
    std::function<std::unique_ptr<LoopDriver>()> make;

    friend void PrintTo(const LoopKind& kind, std::ostream* out) { *out << kind.name; }
};

/// The kinds of loops, for testing::ValuesIn.
std::vector<LoopKind> everyLoop();

/// The name of a test of such a suite.
std::string nameOf(const testing::TestParamInfo<LoopKind>& info);

}  // namespace tarvik::tests
