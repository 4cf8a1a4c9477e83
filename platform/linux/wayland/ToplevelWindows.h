// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/linux/wayland/ToplevelProtocol.h"
#include "platform/linux/wayland/WaylandConnection.h"
#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// The windows of a session, and which of them has the keyboard, as the compositor tells every
/// program that asks (zwlr_foreign_toplevel_manager_v1). Loop thread only.
///
/// The protocol does not tell the process of a window. A window has process 0 until choose().
class ToplevelWindows final : public WindowFocus {
  public:
    /// Gets the number of the window that has the keyboard, whenever it may be another one; 0 at
    /// the end of the object.
    using OnFront = std::function<void(std::int64_t window)>;

    /// Why the compositor does not tell of windows; empty when it does. After `onReady` of the
    /// connection.
    static std::string refusal(const WaylandConnection& connection);

    /// `connection` offers what refusal() asks for, and outlives the object.
    ToplevelWindows(WaylandConnection& connection, OnFront onFront);
    ~ToplevelWindows() override { onFront_(0); }
    ToplevelWindows(const ToplevelWindows&) = delete;
    ToplevelWindows& operator=(const ToplevelWindows&) = delete;

    /// Chooses the window that has the keyboard when the compositor reads the request. The window
    /// belongs to `process`, and windowOf() takes `choice`, unless 0, for the window's number.
    void choose(std::int64_t choice, platform::ProcessIdentifier process);

    void ask(std::function<void()> onKnown) override { connection_.sync(std::move(onKnown)); }
    Window front() const override;
    std::uint64_t changeCount() const override { return changeCount_; }
    /// `wanted` is a number of choose().
    std::int64_t windowOf(std::optional<platform::ProcessIdentifier> process,
                          std::int64_t wanted) const override;
    void activate(std::int64_t window) override;
    /// Without a window before the first activate(), the keyboard stays where it is.
    void giveBack() override;

  private:
    using Handle = zwlr_foreign_toplevel_handle_v1;

    struct HandleDestroyed {
        void operator()(Handle* handle) const { zwlr_foreign_toplevel_handle_v1_destroy(handle); }
    };
    struct ManagerDestroyed {
        void operator()(zwlr_foreign_toplevel_manager_v1* manager) const {
            zwlr_foreign_toplevel_manager_v1_destroy(manager);
        }
    };
    struct SeatDestroyed {
        void operator()(wl_seat* seat) const { wl_seat_destroy(seat); }
    };
    struct Toplevel {
        std::unique_ptr<Handle, HandleDestroyed> handle;
        platform::ProcessIdentifier process = 0;
        // Also of a window whose process is not known: what is right for X is right for all.
        bool isX11 = true;
    };
    // The process is that of the time of the choice.
    struct Choice {
        std::int64_t number = 0;
        std::int64_t window = 0;
        platform::ProcessIdentifier process = 0;
    };

    static void handleToplevel(void* self, zwlr_foreign_toplevel_manager_v1* manager,
                               Handle* handle);
    static void handleState(void* self, Handle* handle, wl_array* states);
    static void handleClosed(void* self, Handle* handle);
    std::int64_t numberOf(const Handle* handle) const;
    void setFront(std::int64_t window);

    WaylandConnection& connection_;
    const OnFront onFront_;
    const std::string server_;
    std::unique_ptr<wl_seat, SeatDestroyed> seat_;
    std::unique_ptr<zwlr_foreign_toplevel_manager_v1, ManagerDestroyed> manager_;
    std::map<std::int64_t, Toplevel> toplevels_;
    std::int64_t front_ = 0;
    std::uint64_t changeCount_ = 0;
    // The windows that were in front, the latest first.
    std::deque<std::int64_t> history_;
    // The latest first.
    std::deque<Choice> choices_;
    // The window that has the keyboard until giveBack(), and the one that has it after that.
    std::int64_t borrower_ = 0;
    std::int64_t lender_ = 0;
};

}  // namespace tarvik::linuxdesktop
