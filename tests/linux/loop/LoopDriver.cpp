// SPDX-License-Identifier: MIT

#include "tests/linux/loop/LoopDriver.h"

#include <QCoreApplication>
#include <array>

#include "platform/linux/loop/MainLoop.h"
#include "platform/linux/loop/MonotonicClock.h"
#include "platform/linux/loop/PollLoop.h"

namespace tarvik::tests {

namespace {

class PollLoopDriver final : public LoopDriver {
  public:
    linuxdesktop::EventLoop& loop() override { return loop_; }

  private:
    void runWhile(const std::function<bool()>& condition) override {
        loop_.run([&] {
            if (!condition()) {
                loop_.quit();
            }
        });
    }

    linuxdesktop::PollLoop loop_;
};

class MainLoopDriver final : public LoopDriver {
  public:
    linuxdesktop::EventLoop& loop() override { return loop_; }

  private:
    void runWhile(const std::function<bool()>& condition) override {
        while (condition()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    int argumentCount_ = 1;
    std::string name_ = "test";
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    QCoreApplication application_{argumentCount_, arguments_.data()};
    linuxdesktop::MonotonicClock clock_;
    linuxdesktop::MainLoop loop_{clock_};
};

}  // namespace

bool LoopDriver::runUntil(const std::function<bool()>& condition,
                          std::chrono::milliseconds timeout) {
    bool isTimedOut = false;
    linuxdesktop::Deadline end(loop());
    end.set(timeout, [&] { isTimedOut = true; });
    runWhile([&] { return !isTimedOut && !condition(); });
    return condition();
}

void LoopDriver::runTurn() {
    bool isOver = false;
    linuxdesktop::Deadline turn(loop());
    turn.set(std::chrono::milliseconds(0), [&] { isOver = true; });
    EXPECT_TRUE(runUntil([&] { return isOver; }));
}

std::vector<LoopKind> everyLoop() {
    return {{"PollLoop", [] { return std::make_unique<PollLoopDriver>(); }},
            {"MainLoop", [] { return std::make_unique<MainLoopDriver>(); }}};
}

std::string nameOf(const testing::TestParamInfo<LoopKind>& info) {
    return info.param.name;
}

}  // namespace tarvik::tests
