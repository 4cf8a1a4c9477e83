// SPDX-License-Identifier: MIT

#include "platform/linux/wayland/WaylandInput.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto compositorTimeout = 1s;
constexpr auto typingTimeoutAtEnd = 800ms;

}  // namespace

WaylandInput::WaylandInput(platform::MainQueue& mainQueue, platform::Log& log,
                           std::shared_ptr<const FrontMeans> processes)
    : mainQueue_(mainQueue),
      log_(log),
      processes_(std::move(processes)),
      reconnection_(loop_, WaylandConnection::socketPath(), [this] { return connectAgain(); }) {
    auto opened = WaylandConnection::open();
    if (!opened) {
        refusal_ = opened.error().localizedDescription;
        return;
    }
    begin(std::move(opened).value());
    try {
        thread_ = startThread("input", [this] {
            loop_.run([this] {
                if (session_) {
                    session_->connection->flush();
                }
            });
            session_.reset();
        });
    } catch (const std::system_error& failure) {
        session_.reset();
        refusal_ = "no thread can speak to the compositor: " + failure.code().message();
        return;
    }
    if (firstAnswer_.get_future().wait_for(compositorTimeout) != std::future_status::ready) {
        log.write("TarvikDictate: the Wayland compositor does not answer");
    }
}

WaylandInput::~WaylandInput() {
    if (thread_.joinable()) {
        loop_.post([this] { finish(); });
        thread_.join();
    }
}

std::optional<std::string> WaylandInput::refusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_;
}

void WaylandInput::begin(std::unique_ptr<WaylandConnection> connection) {
    session_.emplace();
    session_->connection = std::move(connection);
    session_->connection->attach(
        loop_, [this] { handleReady(); },
        [this](const std::string& reason) { handleLoss(reason); });
}

bool WaylandInput::connectAgain() {
    auto opened = WaylandConnection::open();
    if (!opened) {
        return false;
    }
    begin(std::move(opened).value());
    return true;
}

void WaylandInput::handleReady() {
    WaylandConnection& connection = *session_->connection;
    std::string reason = VirtualKeyboard::refusal(connection);
    if (reason.empty()) {
        reason = ToplevelWindows::refusal(connection);
    }
    if (!reason.empty()) {
        refuse(reason);
        return;
    }
    session_->windows.emplace(connection, [this](std::int64_t window) { front_ = window; });
    session_->typist.emplace(connection, *session_->windows, loop_, log_);
    session_->windows->ask([this] {
        isConnected_ = true;
        if (std::exchange(hasAnswered_, true)) {
            log_.write("TarvikDictate: the Wayland compositor is back");
        } else {
            firstAnswer_.set_value();
        }
    });
}

void WaylandInput::handleLoss(const std::string& reason) {
    const std::string text = "the compositor has ended the connection: " + reason;
    log_.write("TarvikDictate: " + text);
    isConnected_ = false;
    front_ = 0;
    if (!hasAnswered_) {
        refuse(text);
    }
    // The caller is a part of the session.
    loop_.post([this] {
        session_.reset();
        reconnection_.begin();
    });
}

void WaylandInput::refuse(const std::string& reason) {
    {
        const std::lock_guard lock(mutex_);
        refusal_ = reason;
    }
    if (!std::exchange(hasAnswered_, true)) {
        firstAnswer_.set_value();
    }
    loop_.post([this] { session_.reset(); });
}

void WaylandInput::finish() {
    reconnection_.end();
    if (session_ && session_->typist) {
        endDeadline_.set(typingTimeoutAtEnd, [this] { loop_.quit(); });
        session_->typist->whenIdle([this] { loop_.quit(); });
    } else {
        loop_.quit();
    }
}

void WaylandInput::type(TypedText text, std::function<void()> onDone) {
    auto onTyped = [this, onDone = std::move(onDone)] {
        if (onDone) {
            mainQueue_.async(onDone);
        }
    };
    const std::int64_t window = target_.process == text.process.value_or(0) ? target_.number : 0;
    loop_.post([this, text = std::move(text), window, onTyped = std::move(onTyped)]() mutable {
        if (session_ && session_->typist) {
            session_->typist->type(std::move(text), window, std::move(onTyped));
        } else {
            log_.write("TarvikDictate: typed text not delivered: no virtual keyboard (" +
                       std::to_string(text.characters.size()) + " characters)");
            onTyped();
        }
    });
}

std::optional<platform::ProcessIdentifier> WaylandInput::frontmostProcess() const {
    return processes_ ? processes_->frontmostProcess() : std::nullopt;
}

std::optional<platform::ProcessIdentifier> WaylandInput::chooseTarget() {
    const auto process = frontmostProcess();
    target_ = {front_, process.value_or(0)};
    loop_.post([this, target = target_] {
        if (session_ && session_->typist) {
            session_->windows->setProcess(target.number, target.process);
            session_->typist->accompanyAlt();
        }
    });
    return process;
}

}  // namespace tarvik::linuxdesktop
