// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AccessibilityWorker.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "platform/linux/accessibility/WriteRequest.h"
#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

using std::chrono::milliseconds;

namespace {

// The worker's deadline is earlier than the main thread's, so that a status at the deadline still
// counts.
constexpr milliseconds statusMargin{40};
// One attempt to write.
constexpr milliseconds pendingWriteTimeout{500};

}  // namespace

AccessibilityWorker::AccessibilityWorker(platform::Log& log) : log_(log) {
    try {
        thread_ = startThread("accessibility", [this] { run(); });
    } catch (const std::system_error& error) {
        log_.write("TarvikDictate: no thread for accessibility: " + error.code().message());
    }
}

AccessibilityWorker::~AccessibilityWorker() {
    if (thread_.joinable()) {
        loop_.post([this] { loop_.quit(); });
        thread_.join();
    }
}

void AccessibilityWorker::run() {
    desktop_.emplace(loop_, log_, state_);
    loop_.run();
    desktop_.reset();
}

std::shared_ptr<WriteReply> AccessibilityWorker::startWrite(
    const std::shared_ptr<AtspiElement>& element, const std::string& text, SteadyTime deadline) {
    auto reply = std::make_shared<WriteReply>();
    if (!thread_.joinable()) {
        reply->deliver(platform::axErrorAPIDisabled, false);
        return reply;
    }
    loop_.post([this, reply, element, text, deadline = deadline - statusMargin] {
        runWrite(reply, element, text, deadline);
    });
    return reply;
}

std::shared_ptr<WriteReply> AccessibilityWorker::startPendingWrite(
    const std::shared_ptr<AtspiElement>& element, const std::string& text) {
    auto reply = std::make_shared<WriteReply>();
    reply->abandon();
    if (!thread_.joinable()) {
        reply->settle(false);
        return reply;
    }
    loop_.post([this, reply, element, text] {
        runWrite(reply, element, text, std::chrono::steady_clock::now() + pendingWriteTimeout);
    });
    return reply;
}

void AccessibilityWorker::runWrite(const std::shared_ptr<WriteReply>& reply,
                                   const std::shared_ptr<AtspiElement>& element,
                                   const std::string& text, SteadyTime deadline) {
    MessageBus* bus = desktop_->accessibilityBus();
    if (!bus || !reply->isWanted()) {
        reply->deliver(platform::axErrorAPIDisabled, false);
        reply->settle(false);
        return;
    }
    std::make_shared<WriteRequest>(
        *bus, element, text,
        [this](const std::string& reason) {
            log_.write("TarvikDictate: accessibility — " + reason);
        },
        [this](std::function<void()> task) { loop_.post(std::move(task)); }, reply)
        ->run(deadline);
}

void AccessibilityWorker::whenFirstKnown(std::function<void()> handler) {
    if (!thread_.joinable()) {
        handler();
        return;
    }
    loop_.post([this, handler = std::move(handler)] { desktop_->whenFirstKnown(handler); });
}

void AccessibilityWorker::connect() {
    post([this] { desktop_->connect(); });
}

void AccessibilityWorker::enable() {
    post([this] { desktop_->enable(); });
}

void AccessibilityWorker::scan(platform::ProcessIdentifier process) {
    post([this, process] { desktop_->scan(process); });
}

void AccessibilityWorker::post(std::function<void()> task) {
    if (thread_.joinable()) {
        loop_.post(std::move(task));
    }
}

}  // namespace tarvik::linuxdesktop
