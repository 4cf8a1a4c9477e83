#include "platform/linux/accessibility/FocusSearch.h"

#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

using accessible::State;

namespace {

constexpr std::chrono::milliseconds patienceWithWidgets{500};
constexpr std::size_t mostWidgets = 2000;
constexpr std::size_t mostInFlight = 32;

}  // namespace

void FocusSearch::start(MessageBus& bus, const BusObject& window, OnDone onDone) {
    const auto search = std::make_shared<FocusSearch>(bus, std::move(onDone));
    search->askForChildren(window);
}

void FocusSearch::ask() {
    while (onDone_ && !waiting_.empty() && inFlight_ < mostInFlight && asked_ < mostWidgets) {
        const BusObject widget = std::move(waiting_.front());
        waiting_.pop_front();
        ++asked_;
        ask(widget);
    }
    if (inFlight_ == 0) {
        finish({std::nullopt, waiting_.empty()});
    }
}

void FocusSearch::ask(const BusObject& widget) {
    // The calls hold the search: it lives as long as an answer is outstanding.
    if (bus_.call(bus_.newCall(widget, accessible::accessibleInterface, "GetState"),
                  patienceWithWidgets, [self = shared_from_this(), widget](sd_bus_message* answer) {
                      self->onStates(widget, answer);
                  })) {
        ++inFlight_;
    }
}

void FocusSearch::askForChildren(const BusObject& widget) {
    if (bus_.call(bus_.newCall(widget, accessible::accessibleInterface, "GetChildren"),
                  patienceWithWidgets, [self = shared_from_this(), widget](sd_bus_message* answer) {
                      self->onChildren(widget, answer);
                  })) {
        ++inFlight_;
    }
}

void FocusSearch::onStates(const BusObject& widget, sd_bus_message* answer) {
    --inFlight_;
    if (!onDone_ || isSilence(answer)) {
        finish({std::nullopt, false});
        return;
    }
    // A widget that is gone by now answers an error; the others are asked all the same.
    if (const auto states = accessible::statesIn(answer)) {
        if (states->contains(State::focused)) {
            finish({widget.path});
            return;
        }
        // Some toolkits set only one of the two for what is on the screen.
        const bool isSeen = states->contains(State::showing) || states->contains(State::visible);
        if (isSeen && !states->contains(State::managesDescendants)) {
            askForChildren(widget);
        }
    }
    ask();
}

void FocusSearch::onChildren(const BusObject& widget, sd_bus_message* answer) {
    --inFlight_;
    if (!onDone_ || isSilence(answer)) {
        finish({std::nullopt, false});
        return;
    }
    const auto children = accessible::childrenIn(answer);
    if (!children && asked_ == 0) {
        // The window itself is gone, or is not there yet: some programs tell of their focus first.
        finish({std::nullopt, false});
        return;
    }
    for (const BusObject& child : children.value_or(std::vector<BusObject>())) {
        // What another program shows inside this window is that program's own.
        if (child.owner == widget.owner) {
            waiting_.push_back(child);
        }
    }
    ask();
}

void FocusSearch::finish(const Result& result) {
    if (const OnDone done = std::exchange(onDone_, nullptr)) {
        done(result);
    }
}

}  // namespace tarvik::linuxdesktop
