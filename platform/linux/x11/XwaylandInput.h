// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "base/AtomicReference.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/input/XHoldListener.h"
#include "platform/linux/x11/XServer.h"

namespace tarvik::linuxdesktop {

/// Types into the X programs of a Wayland session through their own X server, and into all other
/// programs by a means of the session.
///
/// The X server tells which of its programs is in front, and of none while another program is. The
/// object connects to the server once a program has connected, and never starts the server. A
/// shared_ptr holds the object. Main thread only, unless a line says otherwise; nothing waits for
/// the server.
class XwaylandInput final : public TypingMeans,
                            public FrontMeans,
                            public std::enable_shared_from_this<XwaylandInput> {
  public:
    using Open = std::function<std::shared_ptr<XServer>()>;

    /// Connects to the X server that DISPLAY names. The references outlive the object. `front`,
    /// `host` and `holds` may be empty.
    XwaylandInput(platform::MainQueue& mainQueue, platform::Log& log,
                  std::shared_ptr<TypingMeans> typing, std::shared_ptr<FrontMeans> front,
                  std::shared_ptr<XProgramHost> host, std::shared_ptr<XHoldListener> holds);
    /// `open` connects to the X server of a program that has connected.
    XwaylandInput(platform::MainQueue& mainQueue, std::shared_ptr<TypingMeans> typing,
                  std::shared_ptr<FrontMeans> front, Open open);
    /// Hands over the texts that wait.
    ~XwaylandInput() override;

    /// Connects to the X server where a program has connected by now.
    void connect();

    /// Whether the session's own means types.
    bool isAvailable() const override { return typing_->isAvailable(); }
    void type(TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override;
    /// Answers what was noticed last, and asks the X server. The texts for the process wait for the
    /// server's answer, 1 s at the most, and go where that answer says. A server that names
    /// another program than the session's own means is asked a second time.
    std::optional<platform::ProcessIdentifier> chooseTarget() override;
    bool isElsewhere(platform::ProcessIdentifier process) const override;
    bool followsReports() const override { return front_ && front_->followsReports(); }

  private:
    using Process = std::optional<platform::ProcessIdentifier>;

    // A choice that the X server has not confirmed.
    struct Choice {
        int number = 0;
        // What chooseTarget() has answered, and what the session's own means said.
        Process told;
        Process ofSession;
        // What had been noticed of the X server.
        FrontWindow::Known noticed;
        bool isAskedAgain = false;
    };
    // Where the texts go that are for a process which chooseTarget() has answered.
    struct Target {
        // Without a window the session's own means types for `process`.
        FrontWindow::Known window;
        Process process;
    };

    bool isChoosing(int number) const { return choice_ && choice_->number == number; }
    void later(Seconds delay, void (XwaylandInput::*action)());
    void ask();
    void handleAnswer(FrontWindow::Known front);
    void askAgain();
    void decide(FrontWindow::Known front);
    void decideUnanswered();

    platform::MainQueue& mainQueue_;
    const std::shared_ptr<TypingMeans> typing_;
    const std::shared_ptr<FrontMeans> front_;
    const Open open_;
    AtomicReference<XServer> server_;
    int lastNumber_ = 0;
    std::optional<Choice> choice_;
    // For the process of the choice.
    std::vector<std::pair<TypedText, std::function<void()>>> waiting_;
    // Processes whose texts go where the session's own means would not type them.
    std::map<Process, Target> targets_;
};

}  // namespace tarvik::linuxdesktop
