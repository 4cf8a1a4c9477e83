// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/bus/MessageBus.h"

namespace tarvik::linuxdesktop {

/// A search through the widgets of one window for the widget that has the focus. A limited number
/// of queries is pending at a time. The search ends early when the program does not reply, or when
/// the window has very many widgets. Belongs to the bus's thread.
class FocusSearch final : public std::enable_shared_from_this<FocusSearch> {
  public:
    struct Result {
        /// Of the focused widget.
        std::optional<std::string> path;
        /// Without a path: true when nothing in the window has the focus, false when the search
        /// ended early.
        bool isConclusive = true;
    };
    using OnDone = std::function<void(const Result&)>;

    /// Starts a search below `window`. `onDone` is called once, in a handler of `bus`, unless `bus`
    /// is destroyed first.
    static void start(MessageBus& bus, const BusObject& window, OnDone onDone);

    FocusSearch(MessageBus& bus, OnDone onDone) : bus_(bus), onDone_(std::move(onDone)) {}

  private:
    void continueSearch();
    void queryStates(const BusObject& widget);
    void queryChildren(const BusObject& widget);
    void onStates(const BusObject& widget, sd_bus_message* reply);
    void onChildren(const BusObject& widget, sd_bus_message* reply);
    void finish(const Result& result);

    MessageBus& bus_;
    OnDone onDone_;
    std::deque<BusObject> waiting_;
    std::size_t queried_ = 0;
    std::size_t pending_ = 0;
};

}  // namespace tarvik::linuxdesktop
