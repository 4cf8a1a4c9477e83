#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/KeyboardEvents.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/TypedRuns.h"

namespace tarvik::linuxdesktop {

class InputThread;

/// Typing through the XTEST extension. What one block of the main queue posts is typed together,
/// since every change of the keyboard map costs all programs time. Main thread only.
class LinuxKeyboardEvents final : public platform::KeyboardEvents,
                                  public std::enable_shared_from_this<LinuxKeyboardEvents> {
  public:
    /// The references outlive the object, which a shared_ptr holds.
    LinuxKeyboardEvents(InputThread& thread, platform::MainQueue& mainQueue)
        : thread_(thread), mainQueue_(mainQueue) {}
    /// Hands over what was posted last.
    ~LinuxKeyboardEvents() override;

    std::shared_ptr<platform::EventSource> createSource(int sourceState) override;
    std::shared_ptr<platform::KeyboardEvent> createKeyboardEvent(
        const std::shared_ptr<platform::EventSource>& source, std::uint16_t virtualKey,
        bool keyDown) override;
    void setUnicodeString(platform::KeyboardEvent& event, std::u16string_view units) override;
    void postToPid(platform::ProcessIdentifier processIdentifier,
                   const std::shared_ptr<platform::KeyboardEvent>& event) override;
    void post(int tap, const std::shared_ptr<platform::KeyboardEvent>& event) override;

  private:
    void add(std::optional<platform::ProcessIdentifier> process,
             const std::shared_ptr<platform::KeyboardEvent>& event);
    void handOver(std::vector<TypedText> texts);

    InputThread& thread_;
    platform::MainQueue& mainQueue_;
    TypedRuns runs_;
    bool isHandingOver_ = false;
};

}  // namespace tarvik::linuxdesktop
