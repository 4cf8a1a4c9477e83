// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>

namespace tarvik::linuxdesktop {

/// What a compositor does where the X programs of its session are typed into through their X
/// server, and it takes a focus back that an X client has set. Any thread; no operation waits.
class XProgramHost {
  public:
    virtual ~XProgramHost() = default;

    /// From here on `accompanyAlt` is called where an X program has seen Alt alone of a hotkey that
    /// was pressed. An empty function ends that, and the one before is not called any more. It is
    /// called on any thread, and neither waits nor calls this object.
    virtual void setAccompaniment(std::function<void()> accompanyAlt) = 0;

    /// `onXProgram` is called from here on when an X program comes to the front while nobody would
    /// accompany Alt there. It is called on any thread, and neither waits nor calls this object.
    virtual void setXProgramObserver(std::function<void()> onXProgram) = 0;

    /// Gives an X window the keyboard once no other text has borrowed the keyboard, until
    /// giveKeyboardBack(), and for 30 s at the most. The X server tells when the window has it.
    virtual void lendKeyboard(std::uint32_t window) = 0;
    /// Gives the keyboard back to what had it before, unless the user has gone elsewhere. Does
    /// nothing more than to forget a window that has not got it yet.
    virtual void giveKeyboardBack(std::uint32_t window) = 0;
};

}  // namespace tarvik::linuxdesktop
