// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/KeyboardEvents.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/TypedRuns.h"
#include "platform/linux/input/TypingMeans.h"

namespace tarvik::linuxdesktop {

/// Keyboard events that become typed text, whichever means types. The runs that one block of the
/// main queue posts are typed as one text: a means may have a high cost per text.
///
/// The object also knows which processes have text on its way. Text for such a process must not
/// take a faster road, or pieces would arrive in another order than the service sent them. Main
/// thread only.
class LinuxKeyboardEvents final : public platform::KeyboardEvents,
                                  public std::enable_shared_from_this<LinuxKeyboardEvents> {
  public:
    /// Without a means every event is refused, and while the means is not available. The references
    /// outlive the object, which a shared_ptr holds.
    LinuxKeyboardEvents(TypingMeans* means, platform::MainQueue& mainQueue, platform::Log& log)
        : means_(means), mainQueue_(mainQueue), log_(log) {}
    /// Hands the last runs over to the means.
    ~LinuxKeyboardEvents() override;

    /// A refusal is one line in the log: the text that was to be typed is lost.
    std::shared_ptr<platform::EventSource> createSource(int sourceState) override;
    std::shared_ptr<platform::KeyboardEvent> createKeyboardEvent(
        const std::shared_ptr<platform::EventSource>& source, std::uint16_t virtualKey,
        bool keyDown) override;
    void setUnicodeString(platform::KeyboardEvent& event, std::u16string_view units) override;
    void postToPid(platform::ProcessIdentifier processIdentifier,
                   const std::shared_ptr<platform::KeyboardEvent>& event) override;
    void post(int tap, const std::shared_ptr<platform::KeyboardEvent>& event) override;

    /// Keeps the text that is posted next, behind what is kept for `process` already, and all
    /// further text for `process` or for the target of that next text. The next text may be posted
    /// without a process, where the core does not know the process. Returns how many UTF-16 units
    /// are kept for `process` already; empty when no means types at present.
    std::optional<std::size_t> hold(platform::ProcessIdentifier process);
    /// Types what was kept since the first hold(), without the first `units` UTF-16 units.
    void release(platform::ProcessIdentifier process, std::size_t units);

    /// Whether `process` has not yet read, and not lost, all text that was posted for it. Text
    /// without a process may be for any process.
    bool isTypingInto(platform::ProcessIdentifier process) const;

  private:
    using Target = std::optional<platform::ProcessIdentifier>;

    struct Run {
        Target process;
        std::u16string units;
    };
    /// The runs since the first hold(), by its process.
    using Held = std::map<platform::ProcessIdentifier, std::vector<Run>>;

    bool isAvailable() const { return means_ != nullptr && means_->isAvailable(); }
    Held::iterator holdOf(Target process);
    static bool holds(const std::vector<Run>& runs, Target process);
    bool isOnItsWay(Target process) const;
    void add(Target process, const std::shared_ptr<platform::KeyboardEvent>& event);
    void addRun(Target process, std::u16string_view units);
    void handOver(std::vector<TypedText> texts);

    TypingMeans* const means_;
    platform::MainQueue& mainQueue_;
    platform::Log& log_;
    TypedRuns runs_;
    bool isHandingOver_ = false;
    Held held_;
    /// The hold of the text that is posted next.
    std::optional<platform::ProcessIdentifier> nextHold_;
    // How many texts each process has on their way; never 0.
    std::map<Target, int> onTheirWay_;
};

}  // namespace tarvik::linuxdesktop
