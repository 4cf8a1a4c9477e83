// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "platform/linux/input/InputSession.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::tests {

/// What a test says, and what the sessions have done. Used by both threads.
class SessionScript {
  public:
    /// What happens when a session is opened.
    enum class Manner { readyAtOnce, silent, refusing, gone };

    template <typename Value>
    Value get(Value SessionScript::*member) const {
        const std::lock_guard lock(mutex_);
        return this->*member;
    }
    template <typename Value>
    void set(Value SessionScript::*member, Value value) {
        const std::lock_guard lock(mutex_);
        this->*member = std::move(value);
    }
    void write(const std::string& step) {
        const std::lock_guard lock(mutex_);
        steps += step + "; ";
    }

    Manner manner = Manner::readyAtOnce;
    // Empty while the desktop is too busy to decide.
    std::optional<platform::OSStatus> status = platform::noErr;
    std::string reason;
    bool finishesTexts = true;
    bool finishesEnd = true;
    std::string steps;
    int sessions = 0;

  private:
    mutable std::mutex mutex_;
};

/// A session that does what the script says, and writes down what was asked of it.
class FakeSession final : public linuxdesktop::InputSession,
                          public linuxdesktop::SessionHotKeys,
                          public linuxdesktop::SessionTypist {
  public:
    FakeSession(linuxdesktop::EventLoop& loop, SessionScript& script, InputSession::Events events)
        : script_(script), events_(std::move(events)), readyDeadline_(loop) {
        readyDeadline_.set(std::chrono::milliseconds(0), [this] {
            switch (script_.get(&SessionScript::manner)) {
                case SessionScript::Manner::readyAtOnce:
                    answer();
                    break;
                case SessionScript::Manner::refusing:
                    events_.onRefused("not here");
                    break;
                case SessionScript::Manner::gone:
                    events_.onLost("gone again");
                    break;
                case SessionScript::Manner::silent:
                    break;
            }
        });
    }
    ~FakeSession() override { script_.write("session ends"); }

    void answer() { events_.onReady(""); }
    void free() { events_.hotKeys.onFreed(); }
    void lose() { events_.onLost("the desktop is gone"); }
    void decide(platform::OSStatus status) {
        std::exchange(onStatus_, nullptr)(status, script_.get(&SessionScript::reason));
    }
    void press(linuxdesktop::HotKeyNumber number) { events_.hotKeys.onPressed(number); }

    linuxdesktop::SessionHotKeys* hotKeys() override { return this; }
    linuxdesktop::SessionTypist* typist() override { return this; }
    void end(std::function<void()> onDone) override {
        script_.write("give back");
        if (script_.get(&SessionScript::finishesEnd)) {
            onDone();
        }
    }

    void add(linuxdesktop::HotKeyNumber number, std::uint32_t, std::uint32_t,
             OnStatus onStatus) override {
        script_.write("add " + std::to_string(number));
        if (const auto status = script_.get(&SessionScript::status)) {
            onStatus(*status, script_.get(&SessionScript::reason));
        } else {
            onStatus_ = std::move(onStatus);
        }
    }
    void remove(linuxdesktop::HotKeyNumber number, std::function<void()> onDone) override {
        script_.write("remove " + std::to_string(number));
        onDone();
    }
    void removeAll(std::function<void()> onDone) override { onDone(); }

    void type(linuxdesktop::TypedText text, std::int64_t window,
              std::function<void()> onTyped) override {
        script_.write("type " + std::string(text.characters.begin(), text.characters.end()) +
                      " into " + std::to_string(window));
        onTyped();
    }
    void whenIdle(std::function<void()> onIdle) override {
        if (script_.get(&SessionScript::finishesTexts)) {
            onIdle();
        }
    }

  private:
    SessionScript& script_;
    const InputSession::Events events_;
    linuxdesktop::Deadline readyDeadline_;
    OnStatus onStatus_;
};

}  // namespace tarvik::tests
