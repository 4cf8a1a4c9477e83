// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/KeyboardEvents.h"
#include "tests/support/Journal.h"

namespace tarvik::simulated {

/// Records the posted events.
class SimulatedKeyboard final : public platform::KeyboardEvents {
  public:
    /// One posted event.
    struct Post {
        /// The receiving process; nothing for an event that was posted to `tap`.
        std::optional<platform::ProcessIdentifier> process;
        std::optional<int> tap;
        std::uint16_t virtualKey = 0;
        bool isDown = false;
        std::u16string text;
    };

    explicit SimulatedKeyboard(Journal& journal) : journal_(journal) {}

    std::shared_ptr<platform::EventSource> createSource(int sourceState) override;
    std::shared_ptr<platform::KeyboardEvent> createKeyboardEvent(
        const std::shared_ptr<platform::EventSource>& source, std::uint16_t virtualKey,
        bool keyDown) override;
    void setUnicodeString(platform::KeyboardEvent& event, std::u16string_view units) override;
    void postToPid(platform::ProcessIdentifier processIdentifier,
                   const std::shared_ptr<platform::KeyboardEvent>& event) override;
    void post(int tap, const std::shared_ptr<platform::KeyboardEvent>& event) override;

    /// The text of all key-down events for `process`, or without one of those for the tap.
    std::u16string typed(std::optional<platform::ProcessIdentifier> process) const;

    std::vector<Post> posts;
    /// The states of all sources made so far.
    std::vector<int> sourceStates;
    /// The numbers of the events that the system refuses to make, counted from 1.
    std::set<int> refusedEvents;
    bool isSourceRefused = false;
    int createdEvents = 0;

  private:
    void addPost(Post post, const platform::KeyboardEvent& event);

    Journal& journal_;
};

}  // namespace tarvik::simulated
