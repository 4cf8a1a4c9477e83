// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/AtspiAccessibility.h"

#include <unistd.h>

#include <chrono>
#include <utility>

#include "platform/linux/accessibility/AccessibilityWorker.h"
#include "platform/linux/accessibility/AtspiElement.h"
#include "platform/linux/accessibility/FocusSnapshot.h"

namespace tarvik::linuxdesktop {

namespace {

class SystemWideElement final : public platform::AXUIElement {};

// One write.
constexpr std::chrono::milliseconds mainThreadTimeout{500};
// A hotkey is answered in this time, so the main thread waits no longer for text after text.
constexpr std::chrono::milliseconds slowWrite{100};
// The time for which text can wait before it is typed.
constexpr std::chrono::seconds pendingTimeout{30};

}  // namespace

AtspiAccessibility::AtspiAccessibility(std::shared_ptr<AccessibilityWorker> worker,
                                       platform::MainQueue& mainQueue, Input input)
    : input_(std::move(input)),
      pendingWrites_(std::make_shared<PendingWrites>(mainQueue, input_.typing, pendingTimeout)),
      worker_(std::move(worker)) {}

AtspiAccessibility::~AtspiAccessibility() = default;

void AtspiAccessibility::whenFirstKnown(std::function<void()> handler) {
    worker_->whenFirstKnown(std::move(handler));
}

platform::AXUIElementRef AtspiAccessibility::createSystemWide() {
    return std::make_shared<SystemWideElement>();
}

platform::AXError AtspiAccessibility::copyAttributeValue(const platform::AXUIElementRef& element,
                                                         std::string_view attribute,
                                                         platform::AXUIElementRef* outValue) {
    if (!outValue) {
        return platform::axErrorIllegalArgument;
    }
    outValue->reset();
    if (!std::dynamic_pointer_cast<SystemWideElement>(element) ||
        attribute != platform::axFocusedUIElementAttribute) {
        return platform::axErrorAttributeUnsupported;
    }
    const std::shared_ptr<const FocusSnapshot> focus = worker_->state().focus.load();
    if (!focus || !worker_->state().isConnected) {
        worker_->connect();
        return platform::axErrorAPIDisabled;
    }
    const std::optional<platform::ProcessIdentifier> process = input_.frontmostProcess();
    // A write to an own window would wait for a reply that this very thread has to give.
    if (!process || *process == getpid()) {
        return platform::axErrorNoValue;
    }
    const auto found = focus->elements.find(*process);
    if (found == focus->elements.end()) {
        worker_->scan(*process);
        return platform::axErrorNoValue;
    }
    // The focus is read when a recording begins. A program that was busy during an earlier
    // recording may reply by now.
    found->second->forgetFailures();
    *outValue = found->second;
    return platform::axErrorSuccess;
}

platform::AXError AtspiAccessibility::setAttributeValue(const platform::AXUIElementRef& element,
                                                        std::string_view attribute,
                                                        const std::string& text) {
    const auto target = std::dynamic_pointer_cast<AtspiElement>(element);
    if (!target || attribute != platform::axSelectedTextAttribute) {
        return platform::axErrorAttributeUnsupported;
    }
    if (target->application->isGone) {
        return platform::axErrorInvalidUIElement;
    }
    const auto process = target->application->process();
    const PendingWrites::Start startPending = [worker = worker_,
                                               target](const std::string& pending) {
        return worker->startPendingWrite(target, pending);
    };
    if (process && pendingWrites_->isPending(*process)) {
        pendingWrites_->queue(*process, target, text, startPending);
        return platform::axErrorCannotComplete;
    }
    if (target->isUnreliable() || (process && input_.isTypingInto(*process))) {
        return platform::axErrorCannotComplete;
    }
    // Such a program would hold the main thread up at each text of a burst.
    if (target->application->isSlow.exchange(false) && process &&
        pendingWrites_->begin(*process, target, text, startPending)) {
        return platform::axErrorCannotComplete;
    }
    const SteadyTime start = std::chrono::steady_clock::now();
    const SteadyTime deadline = start + mainThreadTimeout;
    const auto reply = worker_->startWrite(target, text, deadline);
    const platform::AXError status = reply->await(deadline);
    if (!reply->isPending()) {
        target->application->isSlow = std::chrono::steady_clock::now() - start > slowWrite;
        return status;
    }
    if (process) {
        return pendingWrites_->add(*process, reply, text);
    }
    return reply->giveUp() ? platform::axErrorSuccess : platform::axErrorCannotComplete;
}

bool AtspiAccessibility::isProcessTrusted() {
    if (!worker_->state().isConnected) {
        worker_->connect();
        return false;
    }
    return worker_->state().isEnabled && input_.canType();
}

bool AtspiAccessibility::isProcessTrustedWithOptions(bool prompt) {
    const bool isTrusted = isProcessTrusted();
    if (prompt && !worker_->state().isEnabled) {
        worker_->enable();
    }
    return isTrusted;
}

}  // namespace tarvik::linuxdesktop
