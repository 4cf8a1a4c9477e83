// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>

#include "base/AtomicReference.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/linux/input/FrontMeans.h"
#include "platform/linux/input/TypingMeans.h"
#include "platform/linux/x11/X11Input.h"

namespace tarvik::linuxdesktop {

/// Types into the X programs of a Wayland session through their own X server, and into all other
/// programs by a means of the session.
///
/// The X server tells which of its programs is in front, and of none while another program is. The
/// object connects to the server once a program has connected, and never starts the server. Main
/// thread only, unless a line says otherwise.
class XwaylandInput final : public TypingMeans, public FrontMeans {
  public:
    /// Waits 0.1 s at the most for the X server. The references outlive the object. `front` may be
    /// empty.
    XwaylandInput(platform::MainQueue& mainQueue, platform::Log& log,
                  std::shared_ptr<TypingMeans> typing, std::shared_ptr<FrontMeans> front);

    /// Whether the session's own means types.
    bool isAvailable() const override { return typing_->isAvailable(); }
    void type(TypedText text, std::function<void()> onDone) override;

    std::optional<platform::ProcessIdentifier> frontmostProcess() const override;
    /// The first call after an X program has connected waits as the constructor does.
    std::optional<platform::ProcessIdentifier> chooseTarget() override;

  private:
    void connect();

    platform::MainQueue& mainQueue_;
    platform::Log& log_;
    const std::shared_ptr<TypingMeans> typing_;
    const std::shared_ptr<FrontMeans> front_;
    AtomicReference<X11Input> server_;
    // The processes that had an X window in front when they were chosen last.
    std::set<platform::ProcessIdentifier> processes_;
};

}  // namespace tarvik::linuxdesktop
