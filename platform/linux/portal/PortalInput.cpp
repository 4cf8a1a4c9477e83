// SPDX-License-Identifier: MIT

#include "platform/linux/portal/PortalInput.h"

#include <chrono>
#include <cstdlib>
#include <future>
#include <system_error>
#include <utility>

#include "platform/linux/loop/Thread.h"
#include "platform/linux/portal/ShortcutsPortal.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto answerTimeout = 1s;
constexpr auto endTimeout = 500ms;

}  // namespace

PortalInput::PortalInput(platform::MainQueue& mainQueue, platform::Log& log,
                         std::weak_ptr<HotKeyListener> listener)
    : log_(log), notifier_(mainQueue, std::move(listener)) {
    refusal_ = connect();
    if (refusal_) {
        return;
    }
    try {
        thread_ = startThread("input", [this] {
            loop_.run();
            connection_.reset();
        });
        isConnected_ = true;
    } catch (const std::system_error& failure) {
        connection_.reset();
        refusal_ = "no thread can speak to the portal: " + failure.code().message();
    }
}

std::optional<std::string> PortalInput::connect() {
    // Portals of X11 sessions report shortcuts that are never heard.
    if (const char* display = std::getenv("WAYLAND_DISPLAY");
        display == nullptr || *display == '\0') {
        return "WAYLAND_DISPLAY is not set";
    }
    auto asked = MessageBus::openSession();
    if (!asked) {
        return "there is no session bus: " + asked.error().localizedDescription;
    }
    const auto offer = ShortcutsPortal::offer(*asked.value());
    if (offer == ShortcutsPortal::Offer::absent) {
        return "no portal of this session offers global shortcuts";
    }
    hasAnswered_ = offer == ShortcutsPortal::Offer::present;
    auto opened = MessageBus::openSession();
    if (!opened) {
        return "there is no session bus: " + opened.error().localizedDescription;
    }
    connection_ = std::make_unique<Connection>(
        std::move(opened).value(), loop_, log_,
        PortalHotKeys::Events{[this](HotKeyNumber number) { notifier_.tellPressed(number); },
                              [this](HotKeyNumber number) { notifier_.tellReleased(number); },
                              [this](HotKeyNumber number, const std::string& reason) {
                                  notifier_.tellLost(number, reason);
                              }});
    connection_->bus->attach(loop_, [this](const Error& error) {
        handleLoss("the session bus is gone: " + error.localizedDescription);
    });
    return std::nullopt;
}

PortalInput::~PortalInput() {
    if (thread_.joinable()) {
        loop_.post([this] { finish(); });
        thread_.join();
    }
}

void PortalInput::handleLoss(const std::string& reason) {
    log_.write("TarvikDictate: " + reason);
    isConnected_ = false;
    connection_.reset();
}

void PortalInput::finish() {
    if (!connection_) {
        loop_.quit();
        return;
    }
    endDeadline_.set(endTimeout, [this] { loop_.quit(); });
    connection_->hotKeys.removeAll([this] { loop_.quit(); });
}

platform::OSStatus PortalInput::registerHotKey(HotKeyNumber number, std::uint32_t keyCode,
                                               std::uint32_t modifiers) {
    if (!isConnected_) {
        return platform::eventInternalErr;
    }
    const auto answer = std::make_shared<std::promise<platform::OSStatus>>();
    std::future<platform::OSStatus> status = answer->get_future();
    loop_.post([this, answer, number, keyCode, modifiers] {
        answer->set_value(connection_ ? connection_->hotKeys.add(number, keyCode, modifiers)
                                      : platform::eventInternalErr);
    });
    return status.wait_for(answerTimeout) == std::future_status::ready
               ? status.get()
               : platform::OSStatus{platform::eventInternalErr};
}

void PortalInput::unregisterHotKey(HotKeyNumber number) {
    const auto answer = std::make_shared<std::promise<void>>();
    const std::future<void> isDone = answer->get_future();
    loop_.post([this, answer, number] {
        if (connection_) {
            connection_->hotKeys.remove(number);
        }
        answer->set_value();
    });
    if (isConnected_) {
        isDone.wait_for(answerTimeout);
    }
}

}  // namespace tarvik::linuxdesktop
