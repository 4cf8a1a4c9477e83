// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AccessibilityWorker.h"

#include <chrono>
#include <utility>

#include "platform/linux/accessibility/TextWrite.h"
#include "platform/linux/loop/Thread.h"

namespace tarvik::linuxdesktop {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr milliseconds mainThreadTimeout{500};
// Earlier than the main thread's, so that a status at the deadline still counts.
constexpr milliseconds workerTimeout{460};

}  // namespace

AccessibilityWorker::AccessibilityWorker(platform::Log& log)
    : log_(log), thread_(startThread("accessibility", [this] { run(); })) {}

AccessibilityWorker::~AccessibilityWorker() {
    loop_.post([this] { loop_.quit(); });
    thread_.join();
}

void AccessibilityWorker::run() {
    desktop_.emplace(loop_, log_, state_);
    loop_.run();
    desktop_.reset();
}

platform::AXError AccessibilityWorker::write(const std::shared_ptr<AtspiElement>& element,
                                             const std::string& text) {
    const auto start = steady_clock::now();
    const auto reply = std::make_shared<WriteReply>();
    loop_.post([this, reply, element, text, deadline = start + workerTimeout] {
        runWrite(*reply, *element, text, deadline);
    });
    return reply->await(start + mainThreadTimeout);
}

void AccessibilityWorker::runWrite(WriteReply& reply, AtspiElement& element,
                                   const std::string& text, SteadyTime deadline) {
    MessageBus* bus = desktop_->accessibilityBus();
    if (!bus || !reply.isAwaited()) {
        reply.deliver(platform::axErrorAPIDisabled);
        return;
    }
    TextWrite write(*bus, element, text, [this](const std::string& reason) {
        log_.write("TarvikDictate: accessibility — " + reason);
    });
    const platform::AXError status = write.run(deadline);
    if (!reply.deliver(status) && status == platform::axErrorSuccess) {
        write.undo();
    }
}

void AccessibilityWorker::whenFirstKnown(std::function<void()> handler) {
    loop_.post([this, handler = std::move(handler)] { desktop_->whenFirstKnown(handler); });
}

void AccessibilityWorker::connect() {
    loop_.post([this] { desktop_->connect(); });
}

void AccessibilityWorker::enable() {
    loop_.post([this] { desktop_->enable(); });
}

void AccessibilityWorker::scan(platform::ProcessIdentifier process) {
    loop_.post([this, process] { desktop_->scan(process); });
}

}  // namespace tarvik::linuxdesktop
