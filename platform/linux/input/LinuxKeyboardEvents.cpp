// SPDX-License-Identifier: MIT

#include "platform/linux/input/LinuxKeyboardEvents.h"

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
    for (const auto& [process, units] : held_) {
        runs_.add(process, units);
    }
    for (TypedText& text : runs_.takeEverything()) {
        means_->type(std::move(text), {});
    }
}

std::shared_ptr<platform::EventSource> LinuxKeyboardEvents::createSource(int /*sourceState*/) {
    return isAvailable() ? std::make_shared<TypedEventSource>() : nullptr;
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
    const auto held = process ? held_.find(*process) : held_.end();
    if (held != held_.end()) {
        held->second += key->units();
    } else {
        addRun(process, key->units());
    }
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

bool LinuxKeyboardEvents::hold(platform::ProcessIdentifier process) {
    if (isAvailable()) {
        held_.try_emplace(process);
    }
    return isAvailable();
}

void LinuxKeyboardEvents::release(platform::ProcessIdentifier process, std::size_t units) {
    if (const auto held = held_.extract(process); held && held.mapped().size() > units) {
        addRun(process, std::u16string_view(held.mapped()).substr(units));
    }
}

bool LinuxKeyboardEvents::isTypingInto(platform::ProcessIdentifier process) const {
    return held_.contains(process) || onTheirWay_.contains(process) || runs_.contains(process);
}

}  // namespace tarvik::linuxdesktop
