#include "platform/linux/accessibility/FocusTracker.h"

#include <chrono>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/accessibility/FocusSearch.h"

namespace tarvik::linuxdesktop {

using accessible::State;

namespace {

constexpr std::chrono::milliseconds patience{500};
// A program that is just starting answers only once it has started.
constexpr std::chrono::seconds patienceWithNewcomers{10};

const BusObject busItself{"org.freedesktop.DBus", "/org/freedesktop/DBus"};
const BusObject allPrograms{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};

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
    // Toolkits do not agree on how the names are spelt.
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
        [this](sd_bus_message* signal) { onJoined(signal); });
    bus_.observe(
        "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
        "member='NameOwnerChanged',arg2=''",
        [this](sd_bus_message* signal) {
            const char* name = nullptr;
            if (sd_bus_message_read(signal, "s", &name) > 0) {
                onLeft(name);
            }
        });
}

FocusTracker::~FocusTracker() {
    for (const auto& [busName, program] : programs_) {
        program.application->isGone = true;
    }
}

void FocusTracker::scan() {
    bus_.call(bus_.newCall(allPrograms, accessible::accessibleInterface, "GetChildren"), patience,
              [this](sd_bus_message* answer) {
                  const auto roots = accessible::childrenIn(answer);
                  for (const BusObject& root : roots.value_or(std::vector<BusObject>())) {
                      scanProgram(root.owner);
                  }
              });
}

void FocusTracker::scan(platform::ProcessIdentifier process) {
    for (const auto& [busName, program] : programs_) {
        if (program.application->process == process) {
            scanProgram(busName);
        }
    }
}

void FocusTracker::onStateChanged(sd_bus_message* signal) {
    const char* state = nullptr;
    std::int32_t isSet = 0;
    // A lost focus is no news: it comes with every key grab, and the widget that gets the focus
    // next says so itself.
    if (sd_bus_message_read(signal, "si", &state, &isSet) > 0 && isSet == 1) {
        const BusObject widget = senderOf(signal);
        setFocus(program(widget.owner), widget.path);
        publish();
    }
}

void FocusTracker::onActivated(const BusObject& window) {
    activeWindow_ = window;
    Program& active = program(window.owner);
    const bool isSameWindow = std::exchange(active.activeWindow, window.path) == window.path;
    publish();
    checkFocus(window, isSameWindow);
}

void FocusTracker::onDeactivated(const BusObject& window) {
    if (activeWindow_ == window) {
        activeWindow_.reset();
        publish();
    }
}

void FocusTracker::onJoined(sd_bus_message* signal) {
    const char* change = nullptr;
    std::int32_t position = 0;
    std::int32_t unused = 0;
    const char* owner = nullptr;
    const char* path = nullptr;
    if (sd_bus_message_read(signal, "siiv", &change, &position, &unused, "(so)", &owner, &path) <=
        0) {
        return;
    }
    // Only the registry's children are other programs; a program's own new window tells by itself
    // when it is activated.
    if (owner != senderOf(signal).owner) {
        scanProgram(owner);
    }
}

void FocusTracker::onLeft(const std::string& busName) {
    const auto left = programs_.find(busName);
    if (left == programs_.end()) {
        return;
    }
    left->second.application->isGone = true;
    programs_.erase(left);
    if (activeWindow_ && activeWindow_->owner == busName) {
        activeWindow_.reset();
    }
    publish();
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
              patience, [this, application = found.application](sd_bus_message* answer) {
                  std::uint32_t process = 0;
                  if (sd_bus_message_read(answer, "u", &process) > 0) {
                      application->process = static_cast<platform::ProcessIdentifier>(process);
                      publish();
                  } else {
                      // It left before the bus could be asked, so nobody tells that it leaves.
                      onLeft(application->busName);
                  }
              });
    bus_.call(bus_.newPropertyCall(found.application->root(), accessible::applicationInterface,
                                   "ToolkitName"),
              patienceWithNewcomers, [application = found.application](sd_bus_message* answer) {
                  application->toolkit = textIn(answer).value_or("");
              });
    return found;
}

void FocusTracker::scanProgram(const std::string& busName) {
    const BusObject root = program(busName).application->root();
    bus_.call(bus_.newCall(root, accessible::accessibleInterface, "GetChildren"),
              patienceWithNewcomers, [this](sd_bus_message* answer) {
                  const auto windows = accessible::childrenIn(answer);
                  for (const BusObject& window : windows.value_or(std::vector<BusObject>())) {
                      examineWindow(window);
                  }
              });
}

void FocusTracker::examineWindow(const BusObject& window) {
    bus_.call(bus_.newCall(window, accessible::accessibleInterface, "GetState"), patience,
              [this, window](sd_bus_message* answer) {
                  const auto states = accessible::statesIn(answer);
                  const auto known = programs_.find(window.owner);
                  if (!states || !states->contains(State::active) || known == programs_.end()) {
                      return;
                  }
                  if (!activeWindow_) {
                      activeWindow_ = window;
                      known->second.activeWindow = window.path;
                      publish();
                  }
                  checkFocus(window, known->second.activeWindow == window.path);
              });
}

void FocusTracker::setFocus(Program& program, const std::string& path) {
    program.news = ++news_;
    if (program.focus && program.focus->path == path) {
        return;
    }
    program.focus = std::make_shared<AtspiElement>(program.application, path);
    // Asked now, it need not be asked while somebody waits for a text to arrive.
    bus_.call(
        bus_.newCall(program.focus->object(), accessible::accessibleInterface, "GetInterfaces"),
        patience, [element = program.focus](sd_bus_message* answer) {
            element->isEditableText = accessible::isEditableTextIn(answer);
        });
}

void FocusTracker::checkFocus(const BusObject& window, bool isSameWindow) {
    const Program& owner = program(window.owner);
    if (!owner.focus) {
        searchFocus(window, isSameWindow);
        return;
    }
    bus_.call(
        bus_.newCall(owner.focus->object(), accessible::accessibleInterface, "GetState"), patience,
        [this, window, isSameWindow, asked = owner.news](sd_bus_message* answer) {
            const auto states = accessible::statesIn(answer);
            const auto known = programs_.find(window.owner);
            const bool isNewer = known == programs_.end() || known->second.news != asked;
            if (!isNewer && !isSilence(answer) && !(states && states->contains(State::focused))) {
                searchFocus(window, isSameWindow);
            }
        });
}

void FocusTracker::searchFocus(const BusObject& window, bool isSameWindow) {
    const auto onDone = [this, window, isSameWindow,
                         asked = program(window.owner).news](const FocusSearch::Result& found) {
        const auto known = programs_.find(window.owner);
        if (known == programs_.end() || known->second.news != asked) {
            return;
        }
        if (found.path) {
            setFocus(known->second, *found.path);
        } else if (found.isConclusive && !isSameWindow) {
            known->second.focus.reset();
        }
        publish();
    };
    FocusSearch::start(bus_, window, onDone);
}

void FocusTracker::publish() {
    auto snapshot = std::make_shared<FocusSnapshot>();
    // A process may be several programs on the bus; the one with the latest news counts.
    std::map<platform::ProcessIdentifier, std::uint64_t> latest;
    for (const auto& [busName, program] : programs_) {
        const auto process = program.application->process;
        if (process && program.focus && program.news >= latest[*process]) {
            latest[*process] = program.news;
            snapshot->elements[*process] = program.focus;
        }
    }
    if (activeWindow_) {
        snapshot->activeProcess = programs_.at(activeWindow_->owner).application->process;
    }
    onChange_(std::move(snapshot));
}

}  // namespace tarvik::linuxdesktop
