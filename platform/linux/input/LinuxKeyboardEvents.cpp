// SPDX-License-Identifier: MIT

#include "platform/linux/input/LinuxKeyboardEvents.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/Weakly.h"

namespace tarvik::linuxdesktop {

namespace {

class TypedEventSource final : public platform::EventSource {};

class TypedEvent final : public platform::KeyboardEvent {
  public:
    explicit TypedEvent(bool isDown) : isDown_(isDown) {}
    bool isDown() const { return isDown_; }
    const std::u16string& units() const { return units_; }
    void setUnits(std::u16string_view units) { units_ = units; }

  private:
    bool isDown_;
    std::u16string units_;
};

}  // namespace

LinuxKeyboardEvents::~LinuxKeyboardEvents() {
    for (const auto& [holding, runs] : held_) {
        for (const Run& run : runs) {
            runs_.add(run.process, run.units);
        }
    }
    for (TypedText& text : runs_.takeEverything()) {
        means_->type(std::move(text), {});
    }
}

std::shared_ptr<platform::EventSource> LinuxKeyboardEvents::createSource(int /*sourceState*/) {
    if (!isAvailable()) {
        log_.write("TarvikDictate: typed text not delivered: nothing can type at present");
        return nullptr;
    }
    return std::make_shared<TypedEventSource>();
}

std::shared_ptr<platform::KeyboardEvent> LinuxKeyboardEvents::createKeyboardEvent(
    const std::shared_ptr<platform::EventSource>& /*source*/, std::uint16_t /*virtualKey*/,
    bool keyDown) {
    return isAvailable() ? std::make_shared<TypedEvent>(keyDown) : nullptr;
}

void LinuxKeyboardEvents::setUnicodeString(platform::KeyboardEvent& event,
                                           std::u16string_view units) {
    static_cast<TypedEvent&>(event).setUnits(units);
}

void LinuxKeyboardEvents::postToPid(platform::ProcessIdentifier processIdentifier,
                                    const std::shared_ptr<platform::KeyboardEvent>& event) {
    add(processIdentifier, event);
}

void LinuxKeyboardEvents::post(int /*tap*/, const std::shared_ptr<platform::KeyboardEvent>& event) {
    add(std::nullopt, event);
}

void LinuxKeyboardEvents::add(Target process,
                              const std::shared_ptr<platform::KeyboardEvent>& event) {
    const auto* key = static_cast<const TypedEvent*>(event.get());
    if (key == nullptr || !key->isDown() || key->units().empty()) {
        return;
    }
    if (const auto held = holdOf(process); held != held_.end()) {
        held->second.push_back({process, key->units()});
    } else {
        addRun(process, key->units());
    }
}

// A hold begins with the text that is posted next, whatever its target is. Later text stays behind
// earlier text for the same target.
LinuxKeyboardEvents::Held::iterator LinuxKeyboardEvents::holdOf(Target process) {
    if (const auto next = std::exchange(nextHold_, std::nullopt)) {
        return held_.find(*next);
    }
    return std::ranges::find_if(held_, [&](const auto& held) {
        return held.first == process || holds(held.second, process);
    });
}

bool LinuxKeyboardEvents::holds(const std::vector<Run>& runs, Target process) {
    return std::ranges::any_of(runs, [&](const Run& run) { return run.process == process; });
}

void LinuxKeyboardEvents::addRun(Target process, std::u16string_view units) {
    runs_.add(process, units);
    if (!std::exchange(isHandingOver_, true)) {
        mainQueue_.async(weakly(*this, [](LinuxKeyboardEvents& self) {
            self.isHandingOver_ = false;
            self.handOver(self.runs_.takeTexts());
        }));
    }
}

void LinuxKeyboardEvents::handOver(std::vector<TypedText> texts) {
    for (TypedText& text : texts) {
        const Target process = text.process;
        ++onTheirWay_[process];
        means_->type(std::move(text), weakly(*this, [process](LinuxKeyboardEvents& self) {
                         if (--self.onTheirWay_[process] == 0) {
                             self.onTheirWay_.erase(process);
                         }
                     }));
    }
}

std::optional<std::size_t> LinuxKeyboardEvents::hold(platform::ProcessIdentifier process) {
    if (!isAvailable()) {
        return std::nullopt;
    }
    std::size_t units = 0;
    for (const Run& run : held_[process]) {
        units += run.units.size();
    }
    nextHold_ = process;
    return units;
}

void LinuxKeyboardEvents::release(platform::ProcessIdentifier process, std::size_t units) {
    const auto held = held_.extract(process);
    if (!held) {
        return;
    }
    if (nextHold_ == process) {
        nextHold_.reset();
    }
    for (const Run& run : held.mapped()) {
        const std::size_t dropped = std::min(units, run.units.size());
        units -= dropped;
        if (dropped < run.units.size()) {
            addRun(run.process, std::u16string_view(run.units).substr(dropped));
        }
    }
}

bool LinuxKeyboardEvents::isOnItsWay(Target process) const {
    return onTheirWay_.contains(process) || runs_.contains(process) ||
           std::ranges::any_of(held_,
                               [&](const auto& held) { return holds(held.second, process); });
}

bool LinuxKeyboardEvents::isTypingInto(platform::ProcessIdentifier process) const {
    return held_.contains(process) || isOnItsWay(process) || isOnItsWay(std::nullopt);
}

}  // namespace tarvik::linuxdesktop
