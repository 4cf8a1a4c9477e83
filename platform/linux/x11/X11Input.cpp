// SPDX-License-Identifier: MIT

#include "platform/linux/x11/X11Input.h"

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <system_error>
#include <utility>

#include "platform/linux/input/RegistrationAnswer.h"
#include "platform/linux/loop/Thread.h"
#include "platform/linux/x11/X11Session.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto sessionConnectTimeout = 1s;
constexpr auto serverTimeout = 1s;
// Leaves the time to put the keyboard back.
constexpr auto typingTimeoutAtEnd = 800ms;

HoldFollower::Events eventsFor(const std::shared_ptr<XHoldListener>& listener) {
    if (!listener) {
        return {};
    }
    return {[listener](std::uint64_t hold, bool areSeen) {
                listener->handleKeysSeenInX(hold, areSeen);
            },
            [listener](std::uint64_t hold) { listener->handleReleaseInX(hold); }};
}

}  // namespace

std::shared_ptr<X11Input> X11Input::openSession(platform::MainQueue& mainQueue, platform::Log& log,
                                                std::weak_ptr<HotKeyListener> listener,
                                                OnLift onLift) {
    const auto answer = std::make_shared<std::promise<void>>();
    const std::future<void> hasAnswered = answer->get_future();
    const std::shared_ptr<X11Input> input(new X11Input(
        mainQueue, log,
        {Server::session,
         [answer](const std::optional<std::string>& /*refusal*/) { answer->set_value(); },
         std::move(listener), std::move(onLift)}));
    if (hasAnswered.wait_for(sessionConnectTimeout) != std::future_status::ready) {
        log.write("TarvikDictate: the X server does not answer");
    }
    return input;
}

std::shared_ptr<X11Input> X11Input::openXwayland(platform::MainQueue& mainQueue, platform::Log& log,
                                                 std::shared_ptr<XProgramHost> host,
                                                 std::shared_ptr<XHoldListener> holds,
                                                 OnServerAnswer onAnswer) {
    return std::shared_ptr<X11Input>(new X11Input(
        mainQueue, log,
        {Server::xwayland, std::move(onAnswer), {}, {}, std::move(host), std::move(holds)}));
}

X11Input::X11Input(platform::MainQueue& mainQueue, platform::Log& log, Options options)
    : mainQueue_(mainQueue),
      log_(log),
      notifier_(mainQueue, std::move(options.listener)),
      onLift_(std::move(options.onLift)),
      host_(std::move(options.host)),
      holdListener_(std::move(options.holds)),
      server_(options.server) {
    try {
        thread_ = startThread("input", [this, onAnswer = options.onAnswer] { run(onAnswer); });
    } catch (const std::system_error& failure) {
        refusal_ = "no thread can speak to the X server: " + failure.code().message();
        hasAnswered_ = true;
        options.onAnswer(refusal_);
    }
}

X11Input::~X11Input() {
    if (!thread_.joinable()) {
        return;
    }
    loop_.post([this] { finish(); });
    if (ended_.get_future().wait_for(serverTimeout) != std::future_status::ready) {
        connector_.cancel();
        if (XcbConnection* connection = waitedFor_) {
            connection->shutDown();
        }
    }
    thread_.join();
}

std::optional<std::string> X11Input::refusal() const {
    return hasAnswered_ && !refusal_.empty() ? std::optional(refusal_) : std::nullopt;
}

void X11Input::run(const OnServerAnswer& onAnswer) {
    XcbConnector::Connected opened = connector_.connect();
    if (!opened) {
        refusal_ = opened.error().localizedDescription;
    } else if (opened.value()->isXwayland() != (server_ == Server::xwayland)) {
        refusal_ = server_ == Server::session
                       ? "the X server belongs to a Wayland session, whose other programs it "
                         "cannot see"
                       : "the X server belongs to no Wayland session";
    } else {
        connection_ = std::move(opened).value();
        waitedFor_ = connection_.get();
        session_ = std::make_unique<X11Session>(
            *connection_, loop_, log_,
            HotKeys::Events{[this](HotKeyNumber number) { notifier_.tellPressed(number); },
                            [this](HotKeyNumber number) { notifier_.tellReleased(number); },
                            [this](HotKeyNumber number, const std::string& reason) {
                                notifier_.tellLost(number, reason);
                            }},
            onLift_, front_, Typist::keyboardTimeout,
            Compositor{host_.get(), eventsFor(holdListener_)});
        setAccompaniment([this] {
            loop_.post([this] {
                if (session_) {
                    session_->hotKeys().accompanyModifiers();
                }
            });
        });
        setFollower([this](std::optional<std::uint64_t> hold) {
            loop_.post([this, hold] {
                if (session_) {
                    session_->holds().follow(hold);
                }
            });
        });
        // The events themselves are read before the next sleep.
        watch_ = loop_.watch(connection_->descriptor(), POLLIN, [] {});
        isConnected_ = true;
    }
    hasAnswered_ = true;
    onAnswer(refusal());
    loop_.run([this] { drain(); });
    endSession();
    ended_.set_value();
}

void X11Input::setAccompaniment(std::function<void()> accompanyAlt) {
    if (host_) {
        host_->setAccompaniment(std::move(accompanyAlt));
    }
}

void X11Input::setFollower(XHoldListener::Follow follow) {
    if (holdListener_) {
        holdListener_->setXFollower(std::move(follow));
    }
}

void X11Input::endSession() {
    if (session_) {
        setAccompaniment({});
        setFollower({});
    }
    watch_.reset();
    session_.reset();
}

void X11Input::drain() {
    if (session_ && !session_->drain()) {
        log_.write("TarvikDictate: the X server is gone");
        isConnected_ = false;
        isGone_ = true;
        endSession();
    }
}

void X11Input::finish() {
    if (session_) {
        session_->typist().whenIdle([this] { loop_.quit(); });
        endDeadline_.set(typingTimeoutAtEnd, [this] { loop_.quit(); });
    } else {
        loop_.quit();
    }
}

platform::OSStatus X11Input::registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                            std::uint32_t modifiers) {
    const auto answer = std::make_shared<RegistrationAnswer>();
    loop_.post([this, answer, number, keyCode, modifiers] {
        const platform::OSStatus status = session_
                                              ? session_->hotKeys().add(number, keyCode, modifiers)
                                              : platform::eventInternalErr;
        if (!answer->settle(status) && status == platform::noErr) {
            notifier_.tellRegistered(number);
        }
    });
    return answer->wait(isConnected_ ? serverTimeout : 0s).value_or(platform::eventInternalErr);
}

void X11Input::unregisterHotKey(HotKeyNumber number) {
    const auto answer = std::make_shared<std::promise<void>>();
    const std::future<void> isDone = answer->get_future();
    loop_.post([this, answer, number] {
        if (session_) {
            session_->hotKeys().remove(number);
        }
        answer->set_value();
    });
    if (isConnected_) {
        isDone.wait_for(serverTimeout);
    }
}

void X11Input::type(TypedText text, std::function<void()> onDone) {
    const xcb_window_t window = target_.process == text.process ? target_.window : XCB_NONE;
    typeInto(window, std::move(text), std::move(onDone));
}

void X11Input::typeInto(xcb_window_t window, TypedText text, std::function<void()> onDone) {
    auto onTyped = [this, onDone = std::move(onDone)] {
        if (onDone) {
            mainQueue_.async(onDone);
        }
    };
    loop_.post([this, text = std::move(text), window, onTyped = std::move(onTyped)]() mutable {
        if (const FrontWindow::Known other = insteadOfOwn_;
            text.process == getpid() && other.process > 0) {
            text.process = other.process;
            window = other.window;
        }
        if (session_) {
            session_->typist().type(std::move(text), window, std::move(onTyped));
        } else {
            log_.write("TarvikDictate: typed text not delivered: no X server (" +
                       std::to_string(text.characters.size()) + " characters)");
            onTyped();
        }
    });
}

std::optional<platform::ProcessIdentifier> X11Input::frontmostProcess() const {
    const FrontWindow::Known front = front_;
    return front.process > 0 ? std::optional(front.process) : std::nullopt;
}

std::optional<platform::ProcessIdentifier> X11Input::chooseTarget() {
    target_ = front_;
    if (target_.process == getpid()) {
        insteadOfOwn_ = FrontWindow::Known();
        loop_.post([this] {
            refreshFront();
            insteadOfOwn_ = front_.load();
        });
    }
    return target_.process > 0 ? std::optional(target_.process) : std::nullopt;
}

bool X11Input::isElsewhere(platform::ProcessIdentifier process) const {
    const FrontWindow::Known other = insteadOfOwn_;
    return process == getpid() && other.process > 0 && other.process != process;
}

void X11Input::refreshFront() {
    if (session_) {
        session_->refreshFront();
    }
}

// A hotkey that another program reports may come before the server's own event.
void X11Input::askFront(std::function<void(FrontWindow::Known)> onAnswer) {
    loop_.post([this, onAnswer = std::move(onAnswer)] {
        refreshFront();
        mainQueue_.async([onAnswer, front = front_.load()] { onAnswer(front); });
    });
}

}  // namespace tarvik::linuxdesktop
