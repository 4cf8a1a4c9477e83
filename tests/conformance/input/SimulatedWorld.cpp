// SPDX-License-Identifier: MIT

#include "tests/conformance/input/InputWorld.h"
#include "tests/support/SimulatedEventManager.h"
#include "tests/support/SimulatedKeyboard.h"
#include "tests/support/SimulatedWorkspace.h"

namespace tarvik::tests {

namespace {

constexpr platform::ProcessIdentifier firstProcess = 101;
constexpr platform::ProcessIdentifier secondProcess = 102;

std::string utf8FromUtf16(std::u16string_view units) {
    std::string text;
    for (std::size_t i = 0; i < units.size(); ++i) {
        char32_t character = units[i];
        if (character >= 0xD800 && character < 0xDC00 && i + 1 < units.size()) {
            character = 0x10000 + ((character - 0xD800) << 10) + (units[++i] - 0xDC00U);
        }
        if (character < 0x80) {
            text += static_cast<char>(character);
            continue;
        }
        const int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
        const unsigned lead = following == 1 ? 0xC0U : following == 2 ? 0xE0U : 0xF0U;
        text += static_cast<char>(lead | character >> (6 * following));
        for (int shift = 6 * (following - 1); shift >= 0; shift -= 6) {
            text += static_cast<char>(0x80U | (character >> shift & 0x3FU));
        }
    }
    return text;
}

class SimulatedInputWorld final : public InputWorld {
  public:
    platform::EventManager& eventManager() override { return eventManager_; }
    platform::KeyboardEvents& keyboardEvents() override { return keyboard_; }

    std::optional<platform::ProcessIdentifier> frontmostProcess() override {
        const auto front = workspace_.frontmostApplication();
        return front ? std::optional(front->processIdentifier()) : std::nullopt;
    }

    // The simulated services act at once.
    bool runUntil(const std::function<bool()>& condition) override { return condition(); }
    void settle() override {}

    void press(std::uint32_t modifiers) override {
        eventManager_.press(platform::spaceKeyCode, modifiers);
    }
    void release(std::uint32_t modifiers) override {
        eventManager_.release(platform::spaceKeyCode, modifiers);
    }
    void take(std::uint32_t modifiers) override {
        eventManager_.take(platform::spaceKeyCode, modifiers);
    }

    void startPrograms() override { workspace_.setFrontmostProcess(secondProcess); }
    platform::ProcessIdentifier processOf(Program program) override {
        return program == Program::first ? firstProcess : secondProcess;
    }
    void endSecondProgram() override { workspace_.setFrontmostProcess(firstProcess); }
    platform::ProcessIdentifier endedProcess() override { return 103; }
    std::string textOf(Program program) override {
        std::u16string units;
        for (const auto& post : keyboard_.posts) {
            // The second program is in front, so it gets what is posted into the tap.
            const auto process = post.process.value_or(secondProcess);
            if (post.isDown && process == processOf(program)) {
                units += post.text;
            }
        }
        return utf8FromUtf16(units);
    }

  private:
    simulated::Journal journal_;
    simulated::SimulatedEventManager eventManager_{journal_};
    simulated::SimulatedKeyboard keyboard_{journal_};
    simulated::SimulatedWorkspace workspace_{journal_};
};

}  // namespace

std::unique_ptr<InputWorld> makeSimulatedInputWorld() {
    return std::make_unique<SimulatedInputWorld>();
}

}  // namespace tarvik::tests
