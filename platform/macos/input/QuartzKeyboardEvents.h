// SPDX-License-Identifier: MIT
#pragma once

#include "platform/KeyboardEvents.h"

namespace tarvik::macdesktop {

/// Keyboard input as CGEvents. The system does not report whether a posted event has arrived.
class QuartzKeyboardEvents final : public platform::KeyboardEvents {
  public:
    std::shared_ptr<platform::EventSource> createSource(int sourceState) override;
    std::shared_ptr<platform::KeyboardEvent> createKeyboardEvent(
        const std::shared_ptr<platform::EventSource>& source, std::uint16_t virtualKey,
        bool keyDown) override;
    void setUnicodeString(platform::KeyboardEvent& event, std::u16string_view units) override;
    void postToPid(platform::ProcessIdentifier processIdentifier,
                   const std::shared_ptr<platform::KeyboardEvent>& event) override;
    void post(int tap, const std::shared_ptr<platform::KeyboardEvent>& event) override;
};

}  // namespace tarvik::macdesktop
