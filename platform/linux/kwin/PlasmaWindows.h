// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/kwin/WindowManagementProtocol.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// The windows of a KWin session, and which of them has the keyboard. Loop thread only.
class PlasmaWindows final : public WindowFocus {
  public:
    /// Gets the window in front whenever it may be another one; number 0 at the end of the object.
    using OnFront = std::function<void(Window)>;

    /// Whether KWin shows its windows to this process. After the `onReady` of the connection.
    static bool isOffered(const WaylandConnection& connection) {
        return connection.offers(org_kde_plasma_window_management_interface);
    }

    /// KWin shows its windows to this process. `connection` outlives the object.
    PlasmaWindows(WaylandConnection& connection, OnFront onFront);
    ~PlasmaWindows() override;
    PlasmaWindows(const PlasmaWindows&) = delete;
    PlasmaWindows& operator=(const PlasmaWindows&) = delete;

    void ask(std::function<void()> onKnown) override;
    Window front() const override;
    std::uint64_t changeCount() const override { return changeCount_; }
    std::int64_t windowOf(std::optional<platform::ProcessIdentifier> process,
                          std::int64_t wanted) const override;
    void activate(std::int64_t window) override;
    void giveBack() override;

  private:
    struct ManagerDestroyed {
        void operator()(org_kde_plasma_window_management* manager) const {
            org_kde_plasma_window_management_destroy(manager);
        }
    };
    struct WindowDestroyed {
        void operator()(org_kde_plasma_window* window) const {
            org_kde_plasma_window_destroy(window);
        }
    };
    // A window as KWin describes it.
    struct Described {
        PlasmaWindows* owner = nullptr;
        std::int64_t number = 0;
        std::unique_ptr<org_kde_plasma_window, WindowDestroyed> proxy = {};
        platform::ProcessIdentifier process = 0;
        bool isActive = false;
    };

    void add(const char* uuid);
    void remove(std::int64_t number);
    void handleState(Described& window, std::uint32_t flags);
    void tellFront();

    static const org_kde_plasma_window_listener windowListener;

    WaylandConnection& connection_;
    OnFront onFront_;
    std::unique_ptr<org_kde_plasma_window_management, ManagerDestroyed> manager_;
    // By their numbers.
    std::map<std::int64_t, Described> windows_;
    std::uint64_t changeCount_ = 0;
    // The windows that were in front, the latest first.
    std::deque<std::int64_t> history_;
    // The window that has the keyboard until giveBack(), and the window that gets it after that.
    std::int64_t borrower_ = 0;
    std::int64_t lender_ = 0;
};

}  // namespace tarvik::linuxdesktop
