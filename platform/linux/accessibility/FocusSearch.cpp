// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/FocusSearch.h"

#include <chrono>
#include <utility>

#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

using atspi::State;

namespace {

constexpr std::chrono::milliseconds widgetTimeout{500};
constexpr std::size_t maxWidgets = 2000;
constexpr std::size_t maxPending = 32;

}  // namespace

void FocusSearch::start(MessageBus& bus, const BusObject& window, OnDone onDone) {
    // The calls own the search, so the search lives as long as a reply is pending.
    const auto search = std::make_shared<FocusSearch>(bus, std::move(onDone));
    search->queryChildren(window);
}

void FocusSearch::continueSearch() {
    while (onDone_ && !waiting_.empty() && pending_ < maxPending && queried_ < maxWidgets) {
        const BusObject widget = std::move(waiting_.front());
        waiting_.pop_front();
        ++queried_;
        queryStates(widget);
    }
    if (pending_ == 0) {
        finish({std::nullopt, waiting_.empty()});
    }
}

void FocusSearch::queryStates(const BusObject& widget) {
    if (bus_.call(bus_.newCall(widget, atspi::accessibleInterface, "GetState"), widgetTimeout,
                  [self = shared_from_this(), widget](sd_bus_message* reply) {
                      self->onStates(widget, reply);
                  })) {
        ++pending_;
    }
}

void FocusSearch::queryChildren(const BusObject& widget) {
    if (bus_.call(bus_.newCall(widget, atspi::accessibleInterface, "GetChildren"), widgetTimeout,
                  [self = shared_from_this(), widget](sd_bus_message* reply) {
                      self->onChildren(widget, reply);
                  })) {
        ++pending_;
    }
}

void FocusSearch::onStates(const BusObject& widget, sd_bus_message* reply) {
    --pending_;
    if (!onDone_ || isNoReply(reply)) {
        finish({std::nullopt, false});
        return;
    }
    // A widget that is gone by now replies with an error; the search goes on without it.
    if (const auto states = atspi::stateSetIn(reply)) {
        if (states->contains(State::focused)) {
            finish({widget.path});
            return;
        }
        // Some toolkits set only one of the two states for a widget on the screen.
        const bool isSeen = states->contains(State::showing) || states->contains(State::visible);
        if (isSeen && !states->contains(State::managesDescendants)) {
            queryChildren(widget);
        }
    }
    continueSearch();
}

void FocusSearch::onChildren(const BusObject& widget, sd_bus_message* reply) {
    --pending_;
    if (!onDone_ || isNoReply(reply)) {
        finish({std::nullopt, false});
        return;
    }
    const auto children = atspi::childrenIn(reply);
    if (!children && queried_ == 0) {
        // The window itself is gone, or not there yet: some programs report their focus first.
        finish({std::nullopt, false});
        return;
    }
    for (const BusObject& child : children.value_or(std::vector<BusObject>())) {
        // A widget of another program inside this window belongs to the other program's search.
        if (child.owner == widget.owner) {
            waiting_.push_back(child);
        }
    }
    continueSearch();
}

void FocusSearch::finish(const Result& result) {
    if (const OnDone done = std::exchange(onDone_, nullptr)) {
        done(result);
    }
}

}  // namespace tarvik::linuxdesktop
