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

/// Looks through the widgets of one window for the one that has the focus. It asks a few at a time
/// and gives up on a program that does not answer and on a window with very many widgets.
class FocusSearch final : public std::enable_shared_from_this<FocusSearch> {
  public:
    struct Result {
        /// Of the widget.
        std::optional<std::string> path;
        /// Without a path: nothing in the window has the focus. Otherwise it could not be told.
        bool isConclusive = true;
    };
    using OnDone = std::function<void(const Result&)>;

    /// Starts a search below `window`; `onDone` is called once, inside a later dispatch() of `bus`,
    /// unless that is destroyed first.
    static void start(MessageBus& bus, const BusObject& window, OnDone onDone);

    FocusSearch(MessageBus& bus, OnDone onDone) : bus_(bus), onDone_(std::move(onDone)) {}

  private:
    void ask();
    void ask(const BusObject& widget);
    void askForChildren(const BusObject& widget);
    void onStates(const BusObject& widget, sd_bus_message* answer);
    void onChildren(const BusObject& widget, sd_bus_message* answer);
    void finish(const Result& result);

    MessageBus& bus_;
    OnDone onDone_;
    std::deque<BusObject> waiting_;
    std::size_t asked_ = 0;
    std::size_t inFlight_ = 0;
};

}  // namespace tarvik::linuxdesktop
