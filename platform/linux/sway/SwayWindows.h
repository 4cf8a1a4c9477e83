// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "platform/linux/sway/SwayConnection.h"
#include "platform/linux/sway/SwayTree.h"
#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// The windows of a Sway session, and which of them has the keyboard. Those of this process float
/// above the others on every workspace, from when they open. Loop thread only.
class SwayWindows final : public WindowFocus {
  public:
    /// Gets the window in front whenever it may be another one; number 0 at the end of the object.
    using OnFront = std::function<void(Window)>;

    /// `connection` outlives the object.
    SwayWindows(SwayConnection& connection, OnFront onFront);
    ~SwayWindows() override { onFront_(Window()); }
    SwayWindows(const SwayWindows&) = delete;
    SwayWindows& operator=(const SwayWindows&) = delete;

    /// Has Sway float the windows of this process that open from here on. A reload of Sway's
    /// configuration ends that.
    void floatOwnWindows();

    /// Handles an event about a window or a workspace.
    void handleEvent(SwayConnection::Event event, std::string_view json);

    void ask(std::function<void()> onKnown) override;
    Window front() const override { return tree_.focused(); }
    std::uint64_t changeCount() const override { return changeCount_; }
    std::int64_t windowOf(std::optional<platform::ProcessIdentifier> process,
                          std::int64_t wanted) const override;
    std::int64_t windowOfX(std::uint32_t xNumber) const override;
    void activate(std::int64_t window) override;
    void giveBack() override;

  private:
    void remember(Window window);
    void refresh();

    SwayConnection& connection_;
    OnFront onFront_;
    SwayTree tree_;
    std::uint64_t changeCount_ = 0;
    // The windows that were in front, the latest first.
    std::deque<std::int64_t> history_;
    bool isRefreshing_ = false;
    // The window that has the keyboard until giveBack(), and what has it after that.
    std::int64_t borrower_ = 0;
    std::string returnCommand_;
};

}  // namespace tarvik::linuxdesktop
