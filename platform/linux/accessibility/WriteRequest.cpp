// SPDX-License-Identifier: MIT

#include "platform/linux/accessibility/WriteRequest.h"

#include <chrono>
#include <optional>
#include <utility>

#include "platform/linux/accessibility/AtspiProtocol.h"
#include "platform/linux/accessibility/CallBatch.h"
#include "platform/linux/accessibility/ElementQueries.h"
#include "platform/linux/bus/BusReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

// LibreOffice loads fonts for some seconds on a busy machine. It drops emoji that are typed.
constexpr auto busyTimeout = 5s;
constexpr auto attemptTimeout = 500ms;
// Of widgets in each other.
constexpr int maxDepth = 50;

}  // namespace

WriteRequest::WriteRequest(MessageBus& bus, std::shared_ptr<AtspiElement> element, std::string text,
                           std::function<void(const std::string&)> onUnreliable, Defer defer,
                           std::shared_ptr<WriteReply> reply)
    : bus_(bus),
      element_(std::move(element)),
      text_(std::move(text)),
      onUnreliable_(std::move(onUnreliable)),
      defer_(std::move(defer)),
      reply_(std::move(reply)) {}

WriteRequest::~WriteRequest() {
    reply_->settle(false);
}

std::shared_ptr<TextWrite> WriteRequest::newWrite(std::shared_ptr<AtspiElement> element) {
    return std::make_shared<TextWrite>(
        bus_, std::move(element), text_,
        TextWrite::Handlers{onUnreliable_,
                            [self = shared_from_this()](bool hasArrived) {
                                return self->reply_->settle(hasArrived);
                            },
                            defer_});
}

// A document is one text in several widgets: one for each paragraph, and one for each page of a
// paragraph. LibreOffice has them. A widget is gone once it has scrolled out of view.
std::shared_ptr<AtspiElement> WriteRequest::focusInTheSameText(SteadyTime deadline) {
    auto focus = element_->application->focus.lock();
    if (!focus || focus->path == element_->path || !element_->isParagraph() || !element_->parent) {
        return nullptr;
    }
    CallBatch queries(bus_, deadline);
    queryElement(bus_, focus, queries);
    const bool isSameText =
        queries.await() && focus->isParagraph() && focus->parent == element_->parent;
    return isSameText ? focus : nullptr;
}

// LibreOffice reports the focus for the pane around its document, too. A recording may begin before
// the report is refuted.
std::shared_ptr<AtspiElement> WriteRequest::focusInside(SteadyTime deadline) {
    auto focus = element_->application->focus.lock();
    if (!focus || focus->path == element_->path) {
        return nullptr;
    }
    if (element_->examinedFocus != focus->path) {
        const auto isInside = isInsideElement(focus->object(), deadline);
        if (!isInside) {
            return nullptr;
        }
        element_->examinedFocus = focus->path;
        element_->containsFocus = *isInside;
    }
    return element_->containsFocus ? focus : nullptr;
}

// Each question depends on the reply to the one before. The parents end at the program's root.
std::optional<bool> WriteRequest::isInsideElement(BusObject inner, SteadyTime deadline) {
    for (int depth = 0; depth < maxDepth; ++depth) {
        std::optional<BusObject> parent;
        CallBatch query(bus_, deadline);
        query.add(bus_.newPropertyCall(inner, atspi::accessibleInterface, "Parent"),
                  [&](sd_bus_message* reply) { parent = atspi::objectPropertyIn(reply); });
        if (!query.await()) {
            return std::nullopt;
        }
        if (parent == element_->object()) {
            return true;
        }
        if (!parent || parent->owner != inner.owner || parent->path == atspi::rootPath) {
            return false;
        }
        inner = *std::move(parent);
    }
    return false;
}

WriteRequest::Attempt WriteRequest::attempt(SteadyTime deadline) {
    auto write = newWrite(element_);
    platform::AXError status = write->run(deadline);
    // The replies to the write came after all that the program has reported of its focus.
    std::shared_ptr<AtspiElement> other;
    if (status == platform::axErrorNoValue || status == platform::axErrorInvalidUIElement) {
        other = focusInTheSameText(deadline);
    } else if (status == platform::axErrorAttributeUnsupported) {
        other = focusInside(deadline);
    }
    if (other) {
        write = newWrite(std::move(other));
        status = write->run(deadline);
    }
    return {write, status};
}

void WriteRequest::run(SteadyTime deadline) {
    lastAttempt_ = std::chrono::steady_clock::now() + busyTimeout;
    const auto [write, status] = attempt(deadline);
    report(*write);
    const bool isAwaited = reply_->deliver(status, write->isPending() || write->hasNotBegun());
    if (write->hasNotBegun()) {
        awaitProgram();
    } else if (!isAwaited && status == platform::axErrorSuccess && !reply_->settle(true)) {
        write->undo();
    }
}

void WriteRequest::awaitProgram() {
    bus_.call(bus_.newCall(element_->object(), atspi::accessibleInterface, "GetState"), busyTimeout,
              [self = shared_from_this()](sd_bus_message* reply) {
                  if (isNoReply(reply)) {
                      self->newWrite(self->element_)->reportSilence();
                  } else {
                      self->defer_([self] { self->runAgain(); });
                  }
              });
}

void WriteRequest::runAgain() {
    if (element_->application->isGone || !reply_->isWanted()) {
        return;
    }
    element_->application->isUnresponsive = false;
    const auto [write, status] = attempt(std::chrono::steady_clock::now() + attemptTimeout);
    report(*write);
    // A busy machine may stop a program more than once.
    if (write->hasNotBegun() && std::chrono::steady_clock::now() < lastAttempt_) {
        awaitProgram();
    } else if (write->hasNotBegun()) {
        write->reportSilence();
    } else if (status == platform::axErrorSuccess && !reply_->settle(true)) {
        write->undo();
    }
}

void WriteRequest::report(const TextWrite& write) {
    if (write.refusal() && !element_->hasRefused.exchange(true)) {
        onUnreliable_(element_->application->name() + " " + write.refusal() +
                      "; the text is typed");
    }
}

}  // namespace tarvik::linuxdesktop
