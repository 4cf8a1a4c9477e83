// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/input/LinuxEventManager.h"
#include "platform/linux/portal/PortalInput.h"
#include "tests/conformance/input/HotKeyRecorder.h"
#include "tests/linux/portal/PortalUser.h"
#include "tests/support/RealTimeQueue.h"
#include "tests/support/RecordingLog.h"

namespace tarvik::tests {

/// Hotkeys of a session that has a portal and nothing else.
class PortalFixture : public testing::Test {
  protected:
    static constexpr auto hold = HotKeyRecorder::hold;
    static constexpr auto toggle = HotKeyRecorder::toggle;
    static constexpr const char* holdName = "alt-space";
    static constexpr const char* toggleName = "alt-shift-space";
    // The second that the contract allows, and what it takes a busy machine to wake a thread.
    static constexpr auto second = std::chrono::milliseconds(1500);

    ~PortalFixture() override { close(); }

    void open() {
        manager = std::make_shared<linuxdesktop::LinuxEventManager>(log);
        input = std::make_unique<linuxdesktop::PortalInput>(mainQueue, log, manager);
        manager->setMeans(input.get());
        recorder.emplace(*manager);
    }
    void close() {
        recorder.reset();
        input.reset();
    }
    /// Both hotkeys, as the application registers them.
    void addBoth() {
        ASSERT_EQ(recorder->add(hold, 1), platform::noErr);
        ASSERT_EQ(recorder->add(toggle, 2), platform::noErr);
    }
    bool isBound(const FakePortal::Names& names) {
        return waitFor([&] { return user.portal()->bound() == names; });
    }
    bool waitFor(const std::function<bool()>& condition) {
        return mainQueue.runUntil(condition, std::chrono::seconds(20));
    }
    bool hasLine(const std::string& part) {
        return waitFor([&] { return log.hasLineWith(part); });
    }
    bool becomes(const std::string& events) {
        const bool holds = waitFor([&] { return recorder->events == events; });
        EXPECT_EQ(recorder->events, events);
        return holds;
    }
    std::size_t losses() const { return log.linesWith("a hotkey is lost").size(); }

    PortalUser user;
    RealTimeQueue mainQueue;
    RecordingLog log;
    std::shared_ptr<linuxdesktop::LinuxEventManager> manager;
    std::unique_ptr<linuxdesktop::PortalInput> input;
    std::optional<HotKeyRecorder> recorder;

    const FakePortal::Names both{holdName, toggleName};
};

}  // namespace tarvik::tests
