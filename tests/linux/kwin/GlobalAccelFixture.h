// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/input/LinuxEventManager.h"
#include "platform/linux/kwin/KWinInput.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/kwin/FakeGlobalAccel.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TemporaryVariables.h"

namespace tarvik::tests {

/// Hotkeys on a session bus of the test's own, without a compositor.
class GlobalAccelFixture : public testing::Test {
  protected:
    static constexpr auto hold = HotKeyRecorder::hold;
    static constexpr auto toggle = HotKeyRecorder::toggle;
    // The second that the contract allows, and what it takes a busy machine to wake a thread.
    static constexpr auto second = std::chrono::milliseconds(1500);

    GlobalAccelFixture() {
        variables.set("WAYLAND_DISPLAY", "/nowhere");
        variables.set("XDG_CONFIG_HOME", settings.path());
        fake.emplace();
    }

    void close() {
        recorder.reset();
        input.reset();
    }
    void open() {
        manager = std::make_shared<linuxdesktop::LinuxEventManager>(log);
        input = std::make_unique<linuxdesktop::KWinInput>(mainQueue, log, manager);
        manager->setMeans(input.get());
        recorder.emplace(*manager);
    }
    bool becomes(const std::string& events) {
        const bool holds = mainQueue.runUntil([&] { return recorder->events == events; });
        EXPECT_EQ(recorder->events, events);
        return holds;
    }
    bool hasActions(const std::map<std::string, std::int32_t>& expected) {
        return mainQueue.runUntil([&] { return fake->actions() == expected; },
                                  std::chrono::seconds(5));
    }
    template <typename Action>
    static std::chrono::steady_clock::duration timeOf(Action action) {
        const auto start = std::chrono::steady_clock::now();
        action();
        return std::chrono::steady_clock::now() - start;
    }

    // Of the user.
    const TemporaryFolder settings;
    TemporaryVariables variables;
    PrivateBus bus;
    RealTimeQueue mainQueue;
    RecordingLog log;
    std::optional<FakeGlobalAccel> fake;
    std::shared_ptr<linuxdesktop::LinuxEventManager> manager;
    std::unique_ptr<linuxdesktop::KWinInput> input;
    std::optional<HotKeyRecorder> recorder;
};

}  // namespace tarvik::tests
