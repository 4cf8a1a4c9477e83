// SPDX-License-Identifier: MIT

#include "platform/linux/x11/XwaylandInput.h"

#include <cstdlib>
#include <string>

#include "base/Weakly.h"
#include "platform/linux/x11/X11Input.h"
#include "platform/linux/x11/XServerClients.h"

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds answerTimeout(1);
// The compositor tells its X server that the user has turned to another program, and a hotkey may
// be faster. GNOME had told it within 0.3 s of a busy machine in each of 22 tries.
constexpr Seconds doubtDelay(0.3);

std::shared_ptr<XServer> openServer(platform::MainQueue& mainQueue, platform::Log& log,
                                    const std::shared_ptr<XProgramHost>& host,
                                    const std::shared_ptr<XHoldListener>& holds) {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || !hasClients(display)) {
        return nullptr;
    }
    return X11Input::openXwayland(
        mainQueue, log, host, holds, [&log](const std::optional<std::string>& refusal) {
            log.write(refusal ? "TarvikDictate: typing into X programs not by XTEST: " + *refusal
                              : "TarvikDictate: typing into X programs by XTEST: their X server "
                                "offers it");
        });
}

}  // namespace

XwaylandInput::XwaylandInput(platform::MainQueue& mainQueue, platform::Log& log,
                             std::shared_ptr<TypingMeans> typing, std::shared_ptr<FrontMeans> front,
                             std::shared_ptr<XProgramHost> host,
                             std::shared_ptr<XHoldListener> holds)
    : XwaylandInput(mainQueue, std::move(typing), std::move(front),
                    [&mainQueue, &log, host = std::move(host), holds = std::move(holds)] {
                        return openServer(mainQueue, log, host, holds);
                    }) {}

XwaylandInput::XwaylandInput(platform::MainQueue& mainQueue, std::shared_ptr<TypingMeans> typing,
                             std::shared_ptr<FrontMeans> front, Open open)
    : mainQueue_(mainQueue),
      typing_(std::move(typing)),
      front_(std::move(front)),
      open_(std::move(open)) {
    connect();
}

XwaylandInput::~XwaylandInput() {
    decideUnanswered();
}

// A server that is refused stays, and is not asked again.
void XwaylandInput::connect() {
    const auto server = server_.load();
    if (!typing_->servesXPrograms() && (!server || server->isGone())) {
        if (auto opened = open_()) {
            server_.store(std::move(opened));
        }
    }
}

void XwaylandInput::type(TypedText text, std::function<void()> onDone) {
    if (choice_ && choice_->told == text.process) {
        waiting_.emplace_back(std::move(text), std::move(onDone));
        return;
    }
    const auto found = targets_.find(text.process);
    if (found == targets_.end()) {
        typing_->type(std::move(text), std::move(onDone));
        return;
    }
    const Target& target = found->second;
    text.process = target.process;
    if (target.window.window != XCB_NONE) {
        server_.load()->typeInto(target.window.window, std::move(text), std::move(onDone));
    } else {
        typing_->type(std::move(text), std::move(onDone));
    }
}

std::optional<platform::ProcessIdentifier> XwaylandInput::frontmostProcess() const {
    const auto server = server_.load();
    const FrontWindow::Known noticed = server ? server->front() : FrontWindow::Known();
    if (noticed.process > 0) {
        return noticed.process;
    }
    return front_ ? front_->frontmostProcess() : std::nullopt;
}

std::optional<platform::ProcessIdentifier> XwaylandInput::chooseTarget() {
    decideUnanswered();
    connect();
    const auto server = server_.load();
    const Process ofSession = front_ ? front_->chooseTarget() : std::nullopt;
    if (!server || server->isGone() || server->refusal()) {
        targets_.erase(ofSession);
        return ofSession;
    }
    const FrontWindow::Known noticed = server->front();
    const Process told = noticed.process > 0 ? Process(noticed.process) : ofSession;
    choice_ = {++lastNumber_, told, ofSession, noticed};
    ask();
    later(answerTimeout, &XwaylandInput::decideUnanswered);
    return told;
}

// Only where the choice has not been made by then.
void XwaylandInput::later(Seconds delay, void (XwaylandInput::*action)()) {
    mainQueue_.asyncAfter(delay,
                          weakly(*this, [number = choice_->number, action](XwaylandInput& self) {
                              if (self.isChoosing(number)) {
                                  (self.*action)();
                              }
                          }));
}

void XwaylandInput::ask() {
    server_.load()->askFront(
        weakly(*this, [number = choice_->number](XwaylandInput& self, FrontWindow::Known front) {
            // A late answer tells what is in front by now.
            if (self.isChoosing(number)) {
                self.handleAnswer(front);
            }
        }));
}

void XwaylandInput::handleAnswer(FrontWindow::Known front) {
    const bool isDoubtful = front.process > 0 && front.window == choice_->noticed.window &&
                            choice_->ofSession != front.process;
    if (isDoubtful && !std::exchange(choice_->isAskedAgain, true)) {
        later(doubtDelay, &XwaylandInput::askAgain);
    } else {
        decide(front);
    }
}

// The session, too, may have heard by now to which program the user has turned.
void XwaylandInput::askAgain() {
    if (!choice_->ofSession && front_) {
        choice_->ofSession = front_->chooseTarget();
    }
    ask();
}

// A server that hangs has not heard to which program the user has turned since, and hands no text
// on.
void XwaylandInput::decideUnanswered() {
    if (choice_) {
        const bool isOutdated =
            choice_->ofSession && choice_->ofSession != choice_->noticed.process;
        decide(isOutdated ? FrontWindow::Known() : choice_->noticed);
    }
}

void XwaylandInput::decide(FrontWindow::Known front) {
    const Choice choice = *std::exchange(choice_, std::nullopt);
    if (front.process > 0) {
        targets_[choice.told] = {front, front.process};
    } else if (choice.told != choice.ofSession) {
        targets_[choice.told] = {{}, choice.ofSession};
    } else {
        targets_.erase(choice.told);
    }
    for (auto& [text, onDone] : std::exchange(waiting_, {})) {
        type(std::move(text), std::move(onDone));
    }
}

bool XwaylandInput::isElsewhere(platform::ProcessIdentifier process) const {
    if (choice_ && choice_->told == process) {
        return true;
    }
    const auto found = targets_.find(process);
    return found != targets_.end() && found->second.process != process;
}

}  // namespace tarvik::linuxdesktop
