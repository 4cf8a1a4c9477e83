// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>

#include "platform/linux/kwin/KWinInputMethodProtocol.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// The input method of a KWin session, on the connection that KWin has made for it. Loop thread
/// only; requests are sent with flush().
class KWinInputMethod {
  public:
    /// `onChange` is called whenever isActive() may have changed. `onLost` is called once, when
    /// KWin ends the connection. Neither destroys the object. `loop` outlives the object.
    KWinInputMethod(std::unique_ptr<WaylandConnection> connection, EventLoop& loop,
                    std::function<void()> onChange, std::function<void()> onLost);
    KWinInputMethod(const KWinInputMethod&) = delete;
    KWinInputMethod& operator=(const KWinInputMethod&) = delete;

    /// Whether a text field has the keyboard.
    bool isActive() const { return context_ != nullptr; }
    /// Puts text into the field that has the keyboard. Without one nothing happens.
    void commit(std::u32string_view text);
    /// As WaylandConnection.
    void sync(std::function<void()> onDone) { connection_->sync(std::move(onDone)); }
    void flush() { connection_->flush(); }

  private:
    struct MethodDestroyed {
        void operator()(zwp_input_method_v1* method) const { zwp_input_method_v1_destroy(method); }
    };
    struct ContextDestroyed {
        void operator()(zwp_input_method_context_v1* context) const {
            zwp_input_method_context_v1_destroy(context);
        }
    };

    void bind();
    void setContext(zwp_input_method_context_v1* context);

    std::unique_ptr<WaylandConnection> connection_;
    std::function<void()> onChange_;
    std::unique_ptr<zwp_input_method_v1, MethodDestroyed> method_;
    std::unique_ptr<zwp_input_method_context_v1, ContextDestroyed> context_;
    std::uint32_t serial_ = 0;
};

}  // namespace tarvik::linuxdesktop
