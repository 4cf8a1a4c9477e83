// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::tests {

/// A program with a text field that takes its text from IBus, and the person at its keyboard.
class IbusProgram {
  public:
    /// Connects to IBus at `address`. `loop` outlives the object.
    IbusProgram(linuxdesktop::EventLoop& loop, const std::string& address);

    /// The field exists, and has no focus.
    bool isReady() const { return !path_.empty(); }
    void focusIn() { call("FocusIn"); }
    void focusOut() { call("FocusOut"); }
    /// A key with the state of the modifiers before the key, as IBus has it.
    void key(std::uint32_t code, std::uint32_t state);

    /// Has the user choose an engine.
    void choose(const std::string& engine);
    /// Asks IBus for the engine that is in use; `engine` has the answer later.
    void askEngine();
    /// The component of another engine, which composes.
    void registerComposer();

    /// What was committed into the field, UTF-8.
    std::string text;
    /// The last commit alone.
    std::string lastCommit;
    /// The keys that an engine has sent to the program: the key's code, "u" after one that goes up.
    std::string forwarded;
    /// Empty while IBus has not answered askEngine().
    std::optional<std::string> engine;
    int answeredKeys = 0;
    int chosenEngines = 0;
    bool isComposerRegistered = false;

  private:
    void call(const char* member);
    void handleSignal(sd_bus_message* signal);
    static int onCreate(sd_bus_message* call, void* self, sd_bus_error* error);
    static const sd_bus_vtable factoryMethods[];

    std::string path_;
    std::unique_ptr<linuxdesktop::MessageBus> bus_;
};

}  // namespace tarvik::tests
