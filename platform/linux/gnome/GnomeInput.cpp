// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/GnomeInput.h"

#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>

#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto shellTimeout = 1s;
// Leaves the time to put the user's engine back.
constexpr auto typingTimeoutAtEnd = 800ms;
constexpr auto endTimeout = 1s;

}  // namespace

GnomeInput::GnomeInput(platform::MainQueue& mainQueue, platform::Log& log,
                       std::weak_ptr<HotKeyListener> listener, Front front)
    : mainQueue_(mainQueue), log_(log), notifier_(mainQueue, std::move(listener)) {
    // GNOME on X11 is served by what serves every X11 session.
    if (const char* display = std::getenv("WAYLAND_DISPLAY");
        display == nullptr || *display == '\0') {
        refusal_ = "WAYLAND_DISPLAY is not set";
        return;
    }
    auto opened = MessageBus::openSession();
    if (!opened) {
        refusal_ = "there is no session bus: " + opened.error().localizedDescription;
        return;
    }
    const auto ready = std::make_shared<std::promise<void>>();
    const std::future<void> isReady = ready->get_future();
    session_ = std::make_unique<GnomeSession>(std::move(opened).value(), loop_, log_,
                                              events(ready, std::move(front)));
    try {
        thread_ = startThread("input", [this] {
            loop_.run();
            session_.reset();
        });
    } catch (const std::system_error& failure) {
        session_.reset();
        refusal_ = "no thread can speak to GNOME: " + failure.code().message();
        return;
    }
    if (isReady.wait_for(shellTimeout) != std::future_status::ready) {
        log.write("TarvikDictate: the session bus does not answer");
    }
}

GnomeInput::~GnomeInput() {
    if (!thread_.joinable()) {
        return;
    }
    loop_.post([this] { finish(); });
    thread_.join();
}

std::optional<std::string> GnomeInput::refusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_;
}

std::optional<std::string> GnomeInput::typingRefusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_ ? refusal_ : typingRefusal_;
}

GnomeSession::Events GnomeInput::events(const std::shared_ptr<std::promise<void>>& ready,
                                        Front front) {
    std::function<bool(platform::ProcessIdentifier)> isInFront;
    if (front) {
        isInFront = [front = std::move(front)](platform::ProcessIdentifier process) {
            return front() == process;
        };
    }
    return {{[this](HotKeyNumber number) { notifier_.tellPressed(number); },
             [this](HotKeyNumber number) { notifier_.tellReleased(number); },
             [this](bool isTaken) { canTakeOver_ = isTaken; }},
            [this, ready](const std::string& typingRefusal) {
                {
                    const std::lock_guard lock(mutex_);
                    if (!typingRefusal.empty()) {
                        typingRefusal_ = typingRefusal;
                    }
                }
                isReady_ = true;
                hasAnswered_ = true;
                ready->set_value();
            },
            [this, ready](const std::string& reason) {
                isReady_ = false;
                if (!std::exchange(hasAnswered_, true)) {
                    refuse(reason);
                    ready->set_value();
                } else {
                    log_.write("TarvikDictate: " + reason);
                }
                // The caller is a part of the session.
                loop_.post([this] { session_.reset(); });
            },
            std::move(isInFront)};
}

void GnomeInput::refuse(const std::string& reason) {
    const std::lock_guard lock(mutex_);
    refusal_ = reason;
}

void GnomeInput::finish() {
    if (!session_) {
        loop_.quit();
        return;
    }
    const auto end = [this, deadline = std::chrono::steady_clock::now() + endTimeout] {
        endDeadline_.set(deadline, [this] { loop_.quit(); });
        session_->end([this] { loop_.quit(); });
    };
    endDeadline_.set(typingTimeoutAtEnd, end);
    session_->typist().whenIdle(end);
}

platform::OSStatus GnomeInput::registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                              std::uint32_t modifiers) {
    const auto answer = std::make_shared<std::promise<platform::OSStatus>>();
    std::future<platform::OSStatus> status = answer->get_future();
    loop_.post([this, answer, number, keyCode, modifiers] {
        if (session_) {
            session_->hotKeys().add(
                number, keyCode, modifiers,
                [answer](platform::OSStatus result) { answer->set_value(result); });
        } else {
            answer->set_value(platform::eventInternalErr);
        }
    });
    if (isReady_ && status.wait_for(shellTimeout) == std::future_status::ready) {
        return status.get();
    }
    // GNOME may still make the shortcut, after everybody has forgotten it.
    loop_.post([this, number] {
        if (session_) {
            session_->hotKeys().remove(number);
        }
    });
    return platform::eventInternalErr;
}

void GnomeInput::unregisterHotKey(HotKeyNumber number) {
    const auto answer = std::make_shared<std::promise<void>>();
    const std::future<void> isDone = answer->get_future();
    loop_.post([this, answer, number] {
        if (session_) {
            session_->hotKeys().remove(number);
        }
        answer->set_value();
    });
    if (isReady_) {
        isDone.wait_for(shellTimeout);
    }
}

void GnomeInput::takeOver() {
    loop_.post([this] {
        if (session_) {
            session_->hotKeys().takeFromWindowMenu();
        }
    });
}

void GnomeInput::type(TypedText text, std::function<void()> onDone) {
    auto onTyped = [this, onDone = std::move(onDone)] {
        if (onDone) {
            mainQueue_.async(onDone);
        }
    };
    loop_.post([this, text = std::move(text), onTyped = std::move(onTyped)]() mutable {
        if (session_) {
            session_->typist().type(std::move(text), std::move(onTyped));
        } else {
            log_.write("TarvikDictate: typed text not delivered: GNOME is gone (" +
                       std::to_string(text.characters.size()) + " characters)");
            onTyped();
        }
    });
}

}  // namespace tarvik::linuxdesktop
