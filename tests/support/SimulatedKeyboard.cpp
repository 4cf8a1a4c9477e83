// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedKeyboard.h"

#include <utility>

namespace tarvik::simulated {

namespace {

class SimulatedSource final : public platform::EventSource {};

class SimulatedKeyboardEvent final : public platform::KeyboardEvent {
  public:
    SimulatedKeyboardEvent(std::uint16_t key, bool down) : virtualKey(key), isDown(down) {}

    const std::uint16_t virtualKey;
    const bool isDown;
    std::u16string text;
};

}  // namespace

std::shared_ptr<platform::EventSource> SimulatedKeyboard::createSource(int sourceState) {
    sourceStates.push_back(sourceState);
    return isSourceRefused ? nullptr : std::make_shared<SimulatedSource>();
}

std::shared_ptr<platform::KeyboardEvent> SimulatedKeyboard::createKeyboardEvent(
    const std::shared_ptr<platform::EventSource>& /*source*/, std::uint16_t virtualKey,
    bool keyDown) {
    return refusedEvents.contains(++createdEvents)
               ? nullptr
               : std::make_shared<SimulatedKeyboardEvent>(virtualKey, keyDown);
}

void SimulatedKeyboard::setUnicodeString(platform::KeyboardEvent& event,
                                         std::u16string_view units) {
    static_cast<SimulatedKeyboardEvent&>(event).text = units;
}

void SimulatedKeyboard::postToPid(platform::ProcessIdentifier processIdentifier,
                                  const std::shared_ptr<platform::KeyboardEvent>& event) {
    Post post;
    post.process = processIdentifier;
    addPost(std::move(post), *event);
}

void SimulatedKeyboard::post(int tap, const std::shared_ptr<platform::KeyboardEvent>& event) {
    Post post;
    post.tap = tap;
    addPost(std::move(post), *event);
}

void SimulatedKeyboard::addPost(Post post, const platform::KeyboardEvent& event) {
    const auto& key = static_cast<const SimulatedKeyboardEvent&>(event);
    post.virtualKey = key.virtualKey;
    post.isDown = key.isDown;
    post.text = key.text;
    journal_.add(std::string("key ") + (key.isDown ? "down " : "up ") +
                 (post.process ? std::to_string(*post.process) : "tap"));
    posts.push_back(std::move(post));
}

std::u16string SimulatedKeyboard::typed(std::optional<platform::ProcessIdentifier> process) const {
    std::u16string text;
    for (const Post& post : posts) {
        if (post.isDown && post.process == process) {
            text += post.text;
        }
    }
    return text;
}

}  // namespace tarvik::simulated
