// SPDX-License-Identifier: MIT

#include "platform/linux/input/HotKeyNotifier.h"

#include <utility>

namespace tarvik::linuxdesktop {

HotKeyNotifier::HotKeyNotifier(platform::MainQueue& mainQueue,
                               std::weak_ptr<HotKeyListener> listener)
    : mainQueue_(mainQueue),
      listener_(std::make_shared<std::weak_ptr<HotKeyListener>>(std::move(listener))) {}

void HotKeyNotifier::tellPressed(HotKeyNumber number) const {
    tell([number](HotKeyListener& listener) { listener.onPressed(number); });
}

void HotKeyNotifier::tellReleased(HotKeyNumber number) const {
    tell([number](HotKeyListener& listener) { listener.onReleased(number); });
}

void HotKeyNotifier::tellLost(HotKeyNumber number, const std::string& reason) const {
    tell([number, reason](HotKeyListener& listener) { listener.onLost(number, reason); });
}

void HotKeyNotifier::tellRegistered(HotKeyNumber number) const {
    tell([number](HotKeyListener& listener) { listener.onRegistered(number); });
}

void HotKeyNotifier::tell(std::function<void(HotKeyListener&)> event) const {
    mainQueue_.async([weakListener = std::weak_ptr(listener_), event = std::move(event)] {
        if (const auto listener = weakListener.lock()) {
            if (const auto listening = listener->lock()) {
                event(*listening);
            }
        }
    });
}

}  // namespace tarvik::linuxdesktop
