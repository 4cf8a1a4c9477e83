// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/kwin/InputMethodSetting.h"
#include "platform/linux/kwin/InputMethodSocket.h"
#include "platform/linux/kwin/KWinInputMethod.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// The place of the one input method in a KWin session, which this program has while it types. The
/// input method of the user is never replaced. Loop thread only; waits for the disk where the
/// settings are written.
class InputMethodSlot {
  public:
    /// A text says why nothing can be put into a text field.
    using OnReady = std::function<void(const std::string& refusal)>;

    /// Gives back what a killed process has left. The references outlive the object.
    InputMethodSlot(MessageBus& bus, EventLoop& loop, platform::Log& log);
    /// Gives the place back.
    ~InputMethodSlot() { giveBack(); }
    InputMethodSlot(const InputMethodSlot&) = delete;
    InputMethodSlot& operator=(const InputMethodSlot&) = delete;

    /// Takes the place, and waits until a text field has the keyboard, 1.5 s at the most. `onReady`
    /// is called in this or a later turn, unless the next request comes first.
    void request(OnReady onReady);
    /// Puts text into the field that has the keyboard. `onDone` is called when KWin has handed the
    /// text on, and not at all when KWin ends the connection first. After a request without a
    /// refusal.
    void commit(std::u32string_view text, std::function<void()> onDone);
    /// Gives the place back, if this program has it.
    void giveBack();
    /// Sends what is ready. To be called before the loop sleeps.
    void flush();

  private:
    std::optional<std::string> take();
    void handleConnection(FileDescriptor wayland);
    void handleChange();
    void answer(const std::string& refusal);
    void announceChange();

    MessageBus& bus_;
    EventLoop& loop_;
    platform::Log& log_;
    // Both in the user's folder for the session; empty without one.
    const std::string desktopFile_;
    const std::string socketPath_;
    InputMethodSetting setting_;
    bool isTaken_ = false;
    std::optional<InputMethodSocket> socket_;
    std::unique_ptr<KWinInputMethod> method_;
    OnReady onReady_;
    Deadline deadline_{loop_};
    // Ends a lost connection, which cannot end itself.
    Deadline closing_{loop_};
};

}  // namespace tarvik::linuxdesktop
