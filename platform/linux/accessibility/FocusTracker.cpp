// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/FocusTracker.h"

#include <chrono>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/accessibility/ElementQueries.h"
#include "platform/linux/accessibility/FocusSearch.h"
#include "platform/linux/accessibility/ListenerFence.h"
#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

using atspi::State;
using atspi::StateSet;

namespace {

constexpr std::chrono::milliseconds replyTimeout{500};
// A program that is just starting replies only once it has started.
constexpr std::chrono::seconds startupTimeout{10};
// No event repeats what a scan was not told. The calls of a scan end with their programs.
constexpr auto scanTimeout = MessageBus::noTimeout;

const BusObject busItself{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
const BusObject allPrograms{"org.a11y.atspi.Registry", atspi::rootPath};

BusObject senderOf(sd_bus_message* signal) {
    const char* sender = sd_bus_message_get_sender(signal);
    const char* path = sd_bus_message_get_path(signal);
    return {sender ? sender : "", path ? path : ""};
}

}  // namespace

FocusTracker::FocusTracker(MessageBus& bus, OnChange onChange)
    : bus_(bus), onChange_(std::move(onChange)) {
    bus_.observe(
        "type='signal',interface='org.a11y.atspi.Event.Object',member='StateChanged',"
        "arg0='focused'",
        [this](sd_bus_message* signal) { onStateChanged(signal); });
    // Toolkits do not agree on the spelling of the names.
    for (const char* member : {"Activate", "activate"}) {
        bus_.observe("type='signal',interface='org.a11y.atspi.Event.Window',member='" +
                         std::string(member) + "'",
                     [this](sd_bus_message* signal) { onActivated(senderOf(signal)); });
    }
    for (const char* member : {"Deactivate", "deactivate"}) {
        bus_.observe("type='signal',interface='org.a11y.atspi.Event.Window',member='" +
                         std::string(member) + "'",
                     [this](sd_bus_message* signal) { onDeactivated(senderOf(signal)); });
    }
    bus_.observe(
        "type='signal',interface='org.a11y.atspi.Event.Object',member='ChildrenChanged',"
        "path='/org/a11y/atspi/accessible/root',arg0='add'",
        [this](sd_bus_message* signal) { onProgramAdded(signal); });
    bus_.observe(
        "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
        "member='NameOwnerChanged',arg2=''",
        [this](sd_bus_message* signal) {
            const char* name = nullptr;
            if (sd_bus_message_read(signal, "s", &name) > 0) {
                onProgramGone(name);
            }
        });
}

FocusTracker::~FocusTracker() {
    for (const auto& [busName, program] : programs_) {
        program.application->isGone = true;
    }
}

void FocusTracker::scan() {
    bus_.call(bus_.newCall(allPrograms, atspi::accessibleInterface, "GetChildren"), scanTimeout,
              [this](sd_bus_message* reply) {
                  const auto roots = atspi::childrenIn(reply);
                  for (const BusObject& root : roots.value_or(std::vector<BusObject>())) {
                      scanNewProgram(root.owner);
                  }
              });
}

void FocusTracker::scan(platform::ProcessIdentifier process) {
    for (const auto& [busName, program] : programs_) {
        if (program.application->process() == process) {
            scanProgram(busName);
        }
    }
}

void FocusTracker::onStateChanged(sd_bus_message* signal) {
    const char* state = nullptr;
    std::int32_t isSet = 0;
    if (sd_bus_message_read(signal, "si", &state, &isSet) <= 0) {
        return;
    }
    const BusObject widget = senderOf(signal);
    Program& sender = program(widget.owner);
    const bool isKnownFocus = sender.focus && sender.focus->path == widget.path;
    if (isSet == 1) {
        // Qt reports a focus right after the widget has lost it. LibreOffice reports one for the
        // pane around the document, although the paragraph has not reported a loss.
        // GTK 3 may report one when the widget has lost it already.
        const bool isOtherWidget = sender.focus && !isKnownFocus;
        const bool isDoubtful = isOtherWidget != sender.isLossReported;
        setFocus(sender, widget.path);
        publish();
        if (isDoubtful) {
            confirmFocus(widget.owner);
        }
    } else if (isKnownFocus) {
        // Every key grab reports a loss too.
        sender.isLossReported = true;
        confirmFocus(widget.owner);
    }
}

void FocusTracker::onActivated(const BusObject& window) {
    if (activeWindow_ != window) {
        otherActiveWindow_ = std::exchange(activeWindow_, window);
    }
    activeSince_ = std::chrono::steady_clock::now();
    Program& active = program(window.owner);
    const bool isSameWindow = std::exchange(active.activeWindow, window.path) == window.path;
    publish();
    checkFocus(window, isSameWindow);
}

void FocusTracker::onDeactivated(const BusObject& window) {
    if (otherActiveWindow_ == window) {
        otherActiveWindow_.reset();
    }
    if (activeWindow_ == window) {
        activeWindow_.reset();
        publish();
        examineOtherActiveWindow();
    }
}

void FocusTracker::onProgramAdded(sd_bus_message* signal) {
    const char* change = nullptr;
    std::int32_t position = 0;
    std::int32_t unused = 0;
    const char* owner = nullptr;
    const char* path = nullptr;
    if (sd_bus_message_read(signal, "siiv", &change, &position, &unused, "(so)", &owner, &path) <=
        0) {
        return;
    }
    // Only the registry's children are programs. The child of a program is a window, which sends an
    // event when it is activated.
    if (owner != senderOf(signal).owner) {
        scanNewProgram(owner);
    }
}

void FocusTracker::onProgramGone(const std::string& busName) {
    const auto left = programs_.find(busName);
    if (left == programs_.end()) {
        return;
    }
    left->second.application->isGone = true;
    programs_.erase(left);
    if (otherActiveWindow_ && otherActiveWindow_->owner == busName) {
        otherActiveWindow_.reset();
    }
    const bool wasActive = activeWindow_ && activeWindow_->owner == busName;
    if (wasActive) {
        activeWindow_.reset();
    }
    publish();
    if (wasActive) {
        examineOtherActiveWindow();
    }
}

FocusTracker::Program& FocusTracker::program(const std::string& busName) {
    const auto [position, isNew] = programs_.try_emplace(busName);
    Program& found = position->second;
    if (!isNew) {
        return found;
    }
    found.application = std::make_shared<AtspiApplication>(busName);
    bus_.call(bus_.newCall(busItself, "org.freedesktop.DBus", "GetConnectionUnixProcessID", "s",
                           busName.c_str()),
              MessageBus::noTimeout,
              [this, application = found.application](sd_bus_message* reply) {
                  std::uint32_t process = 0;
                  if (sd_bus_message_read(reply, "u", &process) > 0) {
                      application->setProcess(static_cast<platform::ProcessIdentifier>(process));
                      publish();
                  } else {
                      // The program left before this query, so no signal tells of its end.
                      onProgramGone(application->busName);
                  }
              });
    bus_.call(
        bus_.newPropertyCall(found.application->root(), atspi::applicationInterface, "ToolkitName"),
        startupTimeout, [application = found.application](sd_bus_message* reply) {
            application->toolkit = textPropertyIn(reply).value_or("");
        });
    return found;
}

// A window may become active before the program knows that somebody listens. No event tells of such
// a window, and its state is read only after the listeners are known.
void FocusTracker::scanNewProgram(const std::string& busName) {
    ListenerFence::pass(bus_, program(busName).application->root(),
                        [this, busName] { scanProgram(busName); });
}

void FocusTracker::scanProgram(const std::string& busName) {
    const BusObject root = program(busName).application->root();
    bus_.call(bus_.newCall(root, atspi::accessibleInterface, "GetChildren"), scanTimeout,
              [this](sd_bus_message* reply) {
                  const auto windows = atspi::childrenIn(reply);
                  for (const BusObject& window : windows.value_or(std::vector<BusObject>())) {
                      examineWindow(window);
                  }
              });
}

void FocusTracker::examineWindow(const BusObject& window) {
    bus_.call(bus_.newCall(window, atspi::accessibleInterface, "GetState"), scanTimeout,
              [this, window](sd_bus_message* reply) {
                  const auto states = atspi::stateSetIn(reply);
                  const auto known = programs_.find(window.owner);
                  if (!states || !states->contains(State::active) || known == programs_.end()) {
                      return;
                  }
                  Program& active = known->second;
                  const bool isSameWindow =
                      active.activeWindow.empty() || active.activeWindow == window.path;
                  active.activeWindow = window.path;
                  if (!activeWindow_) {
                      activeWindow_ = window;
                      activeSince_ = std::chrono::steady_clock::now();
                      publish();
                  } else if (activeWindow_ != window) {
                      otherActiveWindow_ = window;
                  }
                  checkFocus(window, isSameWindow);
              });
}

void FocusTracker::examineOtherActiveWindow() {
    if (const auto window = std::exchange(otherActiveWindow_, std::nullopt)) {
        examineWindow(*window);
    }
}

void FocusTracker::setFocus(Program& program, const std::string& path) {
    program.sequence = ++sequence_;
    if (program.focus && program.focus->path == path) {
        return;
    }
    program.isLossReported = false;
    program.previousFocus =
        std::exchange(program.focus, std::make_shared<AtspiElement>(program.application, path));
    // Queried now, so that no write has to wait for the reply.
    queryElement(bus_, program.focus, [this](BusMessage call, MessageBus::OnReply onReply) {
        bus_.call(std::move(call), replyTimeout, std::move(onReply));
    });
}

void FocusTracker::checkFocus(const BusObject& window, bool isSameWindow) {
    const Program& owner = program(window.owner);
    if (!owner.focus) {
        searchFocus(window, isSameWindow);
        return;
    }
    queryStates(
        owner.focus->object(), [this, window, isSameWindow, focus = owner.focus,
                                sequence = owner.sequence](const std::optional<StateSet>& states) {
            if (isCurrent(*focus, sequence) && !(states && states->contains(State::focused))) {
                searchFocus(window, isSameWindow);
            }
        });
}

void FocusTracker::confirmFocus(const std::string& busName) {
    const auto owner = programs_.find(busName);
    if (owner == programs_.end() || !owner->second.focus) {
        return;
    }
    if (owner->second.activeWindow.empty()) {
        // The window became active before the program reported to the bus.
        scanProgram(busName);
        return;
    }
    const Program& asked = owner->second;
    const BusObject window{busName, asked.activeWindow};
    struct Replies {
        bool wasActive = false;
        bool hasFocus = true;
    };
    const auto replies = std::make_shared<Replies>();
    // The window is asked before and after the widget, because a grab may begin or end in between.
    queryStates(window, [replies](const std::optional<StateSet>& states) {
        replies->wasActive = states && states->contains(State::active);
    });
    queryStates(asked.focus->object(), [replies](const std::optional<StateSet>& states) {
        replies->hasFocus = states && states->contains(State::focused);
    });
    queryStates(window, [this, replies, focus = asked.focus,
                         sequence = asked.sequence](const std::optional<StateSet>& states) {
        if (!isCurrent(*focus, sequence)) {
            return;
        }
        Program& program = programs_.at(focus->application->busName);
        program.isLossReported = false;
        const bool isActive = replies->wasActive && states && states->contains(State::active);
        if (isActive && !replies->hasFocus) {
            rejectFocus(program);
        } else {
            publish();
        }
    });
}

void FocusTracker::queryStates(const BusObject& object,
                               std::function<void(const std::optional<StateSet>&)> onStates) {
    bus_.call(bus_.newCall(object, atspi::accessibleInterface, "GetState"), replyTimeout,
              [onStates = std::move(onStates)](sd_bus_message* reply) {
                  if (!isNoReply(reply)) {
                      onStates(atspi::stateSetIn(reply));
                  }
              });
}

bool FocusTracker::isCurrent(const AtspiElement& focus, std::uint64_t sequence) const {
    const auto known = programs_.find(focus.application->busName);
    return known != programs_.end() && known->second.focus.get() == &focus &&
           known->second.sequence == sequence;
}

void FocusTracker::rejectFocus(Program& program) {
    program.focus = std::exchange(program.previousFocus, nullptr);
    if (program.focus) {
        // Published once it is confirmed too.
        confirmFocus(program.application->busName);
    } else {
        program.isLossReported = true;
        publish();
    }
}

void FocusTracker::searchFocus(const BusObject& window, bool isSameWindow) {
    const auto onDone = [this, window, isSameWindow, sequence = program(window.owner).sequence](
                            const FocusSearch::Result& found) {
        const auto known = programs_.find(window.owner);
        if (known == programs_.end() || known->second.sequence != sequence) {
            return;
        }
        if (found.path) {
            setFocus(known->second, *found.path);
        } else if (found.isConclusive && isSameWindow) {
            confirmFocus(window.owner);
        } else if (found.isConclusive) {
            known->second.focus.reset();
        }
        publish();
    };
    FocusSearch::start(bus_, window, onDone);
}

void FocusTracker::publish() {
    auto snapshot = std::make_shared<FocusSnapshot>();
    // A process may be several programs on the bus. The one with the latest event counts.
    std::map<platform::ProcessIdentifier, std::uint64_t> latest;
    for (const auto& [busName, program] : programs_) {
        program.application->focus = program.focus;
        const auto process = program.application->process();
        if (process && program.focus && program.sequence >= latest[*process]) {
            latest[*process] = program.sequence;
            snapshot->elements[*process] = program.focus;
        }
    }
    if (activeWindow_) {
        snapshot->activeProcess = programs_.at(activeWindow_->owner).application->process();
        snapshot->activeSince = activeSince_;
    }
    onChange_(std::move(snapshot));
}

}  // namespace tarvik::linuxdesktop
