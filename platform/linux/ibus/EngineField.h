// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// The text field of another program that an engine of IBus has. IBus makes an object of the engine
/// for each of its clients, and gives the focus to one of the objects. Loop thread only; no
/// operation waits.
class EngineField {
  public:
    /// `onChange` is called after each change of the field, and does not destroy the object.
    explicit EngineField(std::function<void()> onChange) : onChange_(std::move(onChange)) {}
    EngineField(const EngineField&) = delete;
    EngineField& operator=(const EngineField&) = delete;

    /// The path of the engine's object that has the field; empty without a field.
    const std::string& path() const { return path_; }
    /// How often the field has changed.
    std::uint64_t changeCount() const { return changeCount_; }

    /// The object at `path` has got the focus of a client, which IBus names.
    void focus(const std::string& path, const std::string& client);
    /// The same without the client's name. Asks IBus, which `bus` leads to and which outlives the
    /// reply.
    void focusUnknown(MessageBus& bus, const std::string& path);
    /// The object at `path` has lost the focus.
    void unfocus(const std::string& path) { set(path, false); }
    /// No object has a field any more.
    void drop();

  private:
    void set(const std::string& path, bool isField);

    const std::function<void()> onChange_;
    std::string path_;
    // The object that has got the focus of a client that is being asked for.
    std::string unknownPath_;
    std::uint64_t changeCount_ = 0;
};

}  // namespace tarvik::linuxdesktop
