// SPDX-License-Identifier: MIT

#include "platform/linux/ibus/EngineField.h"

#include <chrono>
#include <utility>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/ibus/IbusMessages.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr std::chrono::seconds contextTimeout{1};

// What stands in for a missing field. Its texts go nowhere. IBus makes it before any other.
constexpr const char* standInClient = "fake";
constexpr const char* standInContext = "/org/freedesktop/IBus/InputContext_1";

}  // namespace

void EngineField::focus(const std::string& path, const std::string& client) {
    set(path, client != standInClient);
}

void EngineField::focusUnknown(MessageBus& bus, const std::string& path) {
    unknownPath_ = path;
    bus.call(bus.newPropertyCall(ibusObject, ibusInterface, "CurrentInputContext"), contextTimeout,
             [this, path](sd_bus_message* reply) {
                 // Whatever has come meanwhile is newer.
                 if (unknownPath_ == path) {
                     set(path, pathPropertyIn(reply).value_or(standInContext) != standInContext);
                 }
             });
}

void EngineField::drop() {
    unknownPath_.clear();
    set(path_, false);
}

void EngineField::set(const std::string& path, bool isField) {
    if (unknownPath_ == path) {
        unknownPath_.clear();
    }
    // The end of another object's field says nothing about this one's.
    if (!isField && path_ != path) {
        return;
    }
    const std::string before = std::exchange(path_, isField ? path : "");
    if (before != path_) {
        ++changeCount_;
        onChange_();
    }
}

}  // namespace tarvik::linuxdesktop
