// SPDX-License-Identifier: MIT
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <vector>

#include "platform/linux/loop/PollLoop.h"
#include "platform/linux/x11/XcbConnection.h"

namespace tarvik::linuxdesktop {

/// Keeps the keyboard from the press of a hotkey until all its keys are up. The grab of the
/// combination ends earlier, when the key goes up. The program in front would then see Alt go up
/// alone, and its menu bar would take the keyboard. Input thread only.
///
/// The server waits after each key event for goOn(), so that no key which comes later is lost.
class HoldGrab {
  public:
    HoldGrab(XcbConnection& connection, PollLoop& loop)
        : connection_(connection), deadline_(loop) {}

    /// To be called while the keyboard is this client's by a press. `keys` are all keys of the
    /// hotkey. Answers the sequence number of the request.
    std::uint32_t take(std::vector<xcb_keycode_t> keys);
    bool isHeld() const { return isHeld_; }
    bool contains(xcb_keycode_t key) const;
    /// A grabbed key event has been handled: as endIfUp(), and else the next one may come.
    void goOn(bool isHoldOver);
    /// Gives the keyboard back when the keys are up; 2 s after the end of the hold at the latest.
    /// Answers whether the grab is still held.
    bool endIfUp(bool isHoldOver);
    /// Gives the keyboard and the last event to the program in front.
    void replay();
    /// Gives the keyboard back.
    void drop();
    /// Something else has ended the grab.
    void forget();

  private:
    bool isAnyDown();
    void requestNext(std::uint8_t mode);

    XcbConnection& connection_;
    bool isHeld_ = false;
    bool isEnding_ = false;
    std::vector<xcb_keycode_t> keys_;
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
