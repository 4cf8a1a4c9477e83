// SPDX-License-Identifier: MIT

#include "platform/linux/x11/XwaylandInput.h"

#include <cstdlib>
#include <utility>

#include "platform/linux/x11/XServerClients.h"

namespace tarvik::linuxdesktop {

XwaylandInput::XwaylandInput(platform::MainQueue& mainQueue, platform::Log& log,
                             std::shared_ptr<TypingMeans> typing, std::shared_ptr<FrontMeans> front)
    : mainQueue_(mainQueue), log_(log), typing_(std::move(typing)), front_(std::move(front)) {
    connect();
}

void XwaylandInput::connect() {
    const auto server = server_.load();
    const char* display = std::getenv("DISPLAY");
    if ((server && !server->isGone()) || display == nullptr || !hasClients(display)) {
        return;
    }
    const auto opened = X11Input::openXwayland(mainQueue_, log_);
    // A server that is refused stays, and is not asked again.
    server_.store(opened);
    if (const auto refusal = opened->refusal()) {
        log_.write("TarvikDictate: typing into X programs not by XTEST: " + *refusal);
    } else {
        log_.write(std::string("TarvikDictate: typing into X programs by XTEST: their X server ") +
                   (opened->isAvailable() ? "offers it"
                                          : "has not answered yet, and is used once it does"));
    }
}

void XwaylandInput::type(TypedText text, std::function<void()> onDone) {
    const auto server = server_.load();
    if (server && text.process && processes_.contains(*text.process)) {
        server->type(std::move(text), std::move(onDone));
    } else {
        typing_->type(std::move(text), std::move(onDone));
    }
}

std::optional<platform::ProcessIdentifier> XwaylandInput::frontmostProcess() const {
    const auto server = server_.load();
    const auto process = server ? server->frontmostProcess() : std::nullopt;
    return process || !front_ ? process : front_->frontmostProcess();
}

std::optional<platform::ProcessIdentifier> XwaylandInput::chooseTarget() {
    connect();
    const auto server = server_.load();
    if (const auto process = server ? server->chooseTarget() : std::nullopt) {
        processes_.insert(*process);
        return process;
    }
    const auto process = front_ ? front_->chooseTarget() : std::nullopt;
    if (process) {
        processes_.erase(*process);
    }
    return process;
}

}  // namespace tarvik::linuxdesktop
