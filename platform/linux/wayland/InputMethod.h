// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/wayland/InputMethodProtocol.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// The input method of the compositor's first seat, as long as the object exists. A seat has one
/// input method, so the object is for one text and not for longer. Loop thread only; requests are
/// sent with WaylandConnection::flush().
class InputMethod {
  public:
    /// Gets why no text can be committed; empty when a text can be.
    using OnKnown = std::function<void(const std::string& refusal)>;

    /// Why the compositor has no place for an input method; empty when it has one. After `onReady`
    /// of the connection.
    static std::string refusal(const WaylandConnection& connection);

    /// Takes the place of the input method, unless it is taken. `onKnown` is called once, in a
    /// later turn: a text field listens, or none has within 0.3 s. `onKnown` may destroy the
    /// object. The references outlive the object, and `connection` offers an input method.
    InputMethod(WaylandConnection& connection, EventLoop& loop, OnKnown onKnown);
    InputMethod(const InputMethod&) = delete;
    InputMethod& operator=(const InputMethod&) = delete;

    /// Whether a text field listens.
    bool isActive() const { return isActive_; }
    /// Puts `characters` into the text field that listens.
    void commit(std::u32string_view characters);

  private:
    struct SeatDestroyed {
        void operator()(wl_seat* seat) const { wl_seat_destroy(seat); }
    };
    struct MethodDestroyed {
        void operator()(zwp_input_method_v2* method) const { zwp_input_method_v2_destroy(method); }
    };

    static void handleDone(void* self, zwp_input_method_v2* method);
    static void handleUnavailable(void* self, zwp_input_method_v2* method);
    // The last thing that a caller does.
    void tell(const std::string& refusal);

    OnKnown onKnown_;
    std::unique_ptr<wl_seat, SeatDestroyed> seat_;
    std::unique_ptr<zwp_input_method_v2, MethodDestroyed> method_;
    // What the next "done" makes true.
    bool willBeActive_ = false;
    bool isActive_ = false;
    // How many "done" have come.
    std::uint32_t serial_ = 0;
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
