#include "platform/linux/input/LinuxKeyboardEvents.h"

#include <string>
#include <utility>
#include <vector>

#include "base/Weakly.h"
#include "platform/linux/x11/InputThread.h"

namespace tarvik::linuxdesktop {

namespace {

class XtestSource final : public platform::EventSource {};

class XtestEvent final : public platform::KeyboardEvent {
  public:
    explicit XtestEvent(bool isDown) : isDown_(isDown) {}
    bool isDown() const { return isDown_; }
    const std::u16string& units() const { return units_; }
    void setUnits(std::u16string_view units) { units_ = units; }

  private:
    bool isDown_;
    std::u16string units_;
};

}  // namespace

LinuxKeyboardEvents::~LinuxKeyboardEvents() {
    handOver(runs_.takeEverything());
}

std::shared_ptr<platform::EventSource> LinuxKeyboardEvents::createSource(int /*sourceState*/) {
    return thread_.isConnected() ? std::make_shared<XtestSource>() : nullptr;
}

std::shared_ptr<platform::KeyboardEvent> LinuxKeyboardEvents::createKeyboardEvent(
    const std::shared_ptr<platform::EventSource>& /*source*/, std::uint16_t /*virtualKey*/,
    bool keyDown) {
    return thread_.isConnected() ? std::make_shared<XtestEvent>(keyDown) : nullptr;
}

void LinuxKeyboardEvents::setUnicodeString(platform::KeyboardEvent& event,
                                           std::u16string_view units) {
    static_cast<XtestEvent&>(event).setUnits(units);
}

void LinuxKeyboardEvents::postToPid(platform::ProcessIdentifier processIdentifier,
                                    const std::shared_ptr<platform::KeyboardEvent>& event) {
    add(processIdentifier, event);
}

void LinuxKeyboardEvents::post(int /*tap*/, const std::shared_ptr<platform::KeyboardEvent>& event) {
    add(std::nullopt, event);
}

void LinuxKeyboardEvents::add(std::optional<platform::ProcessIdentifier> process,
                              const std::shared_ptr<platform::KeyboardEvent>& event) {
    const auto* key = static_cast<const XtestEvent*>(event.get());
    if (key == nullptr || !key->isDown() || key->units().empty()) {
        return;
    }
    runs_.add(process, key->units());
    if (!std::exchange(isHandingOver_, true)) {
        mainQueue_.async(weakly(*this, [](LinuxKeyboardEvents& self) {
            self.isHandingOver_ = false;
            self.handOver(self.runs_.takeTexts());
        }));
    }
}

void LinuxKeyboardEvents::handOver(std::vector<TypedText> texts) {
    for (TypedText& text : texts) {
        thread_.type(std::move(text));
    }
}

}  // namespace tarvik::linuxdesktop
