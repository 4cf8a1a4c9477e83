#include "platform/linux/x11/X11Input.h"

#include <utility>

#include "platform/linux/input/LinuxEventManager.h"
#include "platform/linux/input/LinuxKeyboardEvents.h"
#include "platform/linux/x11/InputThread.h"

namespace tarvik::linuxdesktop {

/// Where the input thread finds the event manager, which is made after it.
struct X11Input::Delivery {
    std::weak_ptr<LinuxEventManager> eventManager;
};

std::unique_ptr<X11Input> X11Input::open(platform::MainQueue& mainQueue, platform::Log& log) {
    return std::unique_ptr<X11Input>(new X11Input(mainQueue, log));
}

X11Input::X11Input(platform::MainQueue& mainQueue, platform::Log& log)
    : delivery_(std::make_shared<Delivery>()),
      thread_(std::make_unique<InputThread>(
          log,
          [&mainQueue, delivery = delivery_](HotKeyNumber number, std::uint32_t kind) {
              mainQueue.async([delivery, number, kind] {
                  if (const auto eventManager = delivery->eventManager.lock()) {
                      eventManager->deliver(number, kind);
                  }
              });
          })),
      eventManager_(std::make_shared<LinuxEventManager>(*thread_)),
      keyboardEvents_(std::make_shared<LinuxKeyboardEvents>(*thread_, mainQueue)) {
    delivery_->eventManager = eventManager_;
}

X11Input::~X11Input() = default;

platform::EventManager& X11Input::eventManager() {
    return *eventManager_;
}

platform::KeyboardEvents& X11Input::keyboardEvents() {
    return *keyboardEvents_;
}

std::optional<platform::ProcessIdentifier> X11Input::frontmostProcess() const {
    return thread_->frontmostProcess();
}

bool X11Input::canType() const {
    return thread_->isConnected();
}

}  // namespace tarvik::linuxdesktop
