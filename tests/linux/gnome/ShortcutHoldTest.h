// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/EventManager.h"
#include "platform/linux/gnome/ShortcutHold.h"
#include "tests/linux/input/KernelKeys.h"
#include "tests/linux/loop/VirtualLoop.h"

namespace tarvik::tests {

/// Has a field, or none, as the test says.
class FakeFieldEngine final : public linuxdesktop::FieldEngine {
  public:
    void acquire() override { ++users; }
    void release() override { --users; }
    bool hasField() const override { return isInField && users > 0; }
    void tapControl() override { ++taps; }

    bool isInField = false;
    int users = 0;
    int taps = 0;
};

/// In virtual time, with GNOME's first settings of a keyboard.
class ShortcutHoldTest : public testing::Test, protected KernelKeys {
  protected:
    static std::uint32_t modifiersOf(linuxdesktop::HotKeyNumber number) {
        return number == 1 ? platform::optionKeyMask
                           : platform::optionKeyMask | platform::shiftKeyMask;
    }
    void press(linuxdesktop::HotKeyNumber number = 1) {
        shortcut.handlePress(number, modifiersOf(number), loop.now());
    }
    void pressAfter(std::chrono::milliseconds time, linuxdesktop::HotKeyNumber number = 1) {
        loop.runFor(time);
        press(number);
    }
    std::string eventsAfter(std::chrono::milliseconds time) {
        loop.runFor(time);
        return events;
    }
    /// A report of GNOME that comes `delay` after its time.
    void pressLate(std::chrono::milliseconds delay, linuxdesktop::HotKeyNumber number = 1) {
        shortcut.handlePress(number, modifiersOf(number), loop.now() - delay);
    }
    void see(std::uint32_t key, bool isUp) { shortcut.handleKey({key, isUp, true}); }

    VirtualLoop loop;
    FakeFieldEngine engine;
    std::optional<linuxdesktop::KeyRepetition> repetition =
        linuxdesktop::KeyRepetition{std::chrono::milliseconds(500), std::chrono::milliseconds(30)};
    std::string events;
    linuxdesktop::SteadyTime eventTime;
    // Of the hold that the X server would follow.
    std::optional<std::uint64_t> holdNumber;
    linuxdesktop::ShortcutHold shortcut{
        engine,
        loop,
        {[this](linuxdesktop::HotKeyNumber number) { write("P", number); },
         [this](linuxdesktop::HotKeyNumber number) { write("R", number); },
         [this](std::optional<std::uint64_t> number) { holdNumber = number; }},
        [this] { return repetition; }};

  private:
    void write(const std::string& event, linuxdesktop::HotKeyNumber number) {
        events += event + std::to_string(number);
        eventTime = loop.now();
    }
};

}  // namespace tarvik::tests
