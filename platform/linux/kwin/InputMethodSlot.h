// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/linux/bus/MessageBus.h"
#include "platform/linux/kwin/FocusedField.h"
#include "platform/linux/kwin/InputMethodSetting.h"
#include "platform/linux/kwin/InputMethodSocket.h"
#include "platform/linux/kwin/KWinInputMethod.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// The place of the one input method in a KWin session, which this program has while it types. The
/// input method of the user is never replaced. Loop thread only; waits for the disk where the
/// settings are written.
class InputMethodSlot final : public FocusedField {
  public:
    /// Gives back what a killed process has left. The references outlive the object.
    InputMethodSlot(MessageBus& bus, EventLoop& loop, platform::Log& log);
    /// Gives the place back.
    ~InputMethodSlot() override { InputMethodSlot::giveBack(); }
    InputMethodSlot(const InputMethodSlot&) = delete;
    InputMethodSlot& operator=(const InputMethodSlot&) = delete;

    /// Waits 1.5 s at the most.
    void request(OnReady onReady) override;
    void commit(std::u32string_view text, std::function<void()> onDone) override;
    void giveBack() override;

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
