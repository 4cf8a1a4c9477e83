// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Log.h"
#include "platform/linux/input/SessionTypist.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/wayland/InputMethod.h"
#include "platform/linux/wayland/TextKeymap.h"
#include "platform/linux/wayland/VirtualKeyboard.h"
#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// Types texts by a virtual keyboard, one after the other. Loop thread only.
///
/// A text with characters that its program would cut to 16 bits goes through an input method, if
/// the user has none and a text field listens. Otherwise those characters are left out.
///
/// Keys go to whatever has the keyboard when they reach the compositor. So the focus is asked for
/// before each burst of keys and after it. A program that reads nothing gets no more than a burst:
/// compositors end a program whose events pile up.
class VirtualTypist final : public SessionTypist {
  public:
    /// The references outlive the object. The compositor offers virtual keyboards.
    VirtualTypist(WaylandConnection& connection, WindowFocus& focus, EventLoop& loop,
                  platform::Log& log);
    ~VirtualTypist() override;
    VirtualTypist(const VirtualTypist&) = delete;
    VirtualTypist& operator=(const VirtualTypist&) = delete;

    /// A text without a process goes to `window` or nowhere, and where `window` is 0, to whatever
    /// has the keyboard. `onTyped` is called when the text has been read by its target, or is lost.
    void type(TypedText text, std::int64_t window, std::function<void()> onTyped) override;
    void whenIdle(std::function<void()> onIdle) override;

    /// Gives an X window the keyboard, after the texts before it and before those after it, until
    /// giveKeyboardBack(), and for 30 s at the most. Gives it again where the user has gone
    /// elsewhere meanwhile.
    void lendKeyboard(std::uint32_t xNumber);
    void giveKeyboardBack(std::uint32_t xNumber);

    /// The user has pressed a hotkey with Alt, of which the program in front has seen Alt alone. A
    /// key between Alt down and Alt up keeps the program from opening its menu.
    void accompanyAlt();

  private:
    struct Item {
        TypedText text;
        std::int64_t window = 0;
        std::function<void()> onTyped;
        // How many characters have been typed.
        std::size_t position = 0;
        // The X window that borrows the keyboard; 0 for a text.
        std::uint32_t borrower = 0;
        // Whether the X window has given the keyboard back.
        bool isOver = false;

        // Whether only one window or process may get the text.
        bool hasTarget() const { return text.process || window != 0; }
    };

    void beginNext();
    // Each step ends with the next one, or with the end of the text.
    void lend();
    void endLoan();
    void findTarget();
    void lookAtFocus();
    // For a program that cuts typed characters to 16 bits.
    void beginInputMethod();
    void commitByInputMethod(const std::string& refusal);
    // No character is better than a wrong one.
    void leaveOutWideCharacters(const std::string& reason);
    void activateTarget();
    void prepareKeymap();
    void sendBurst();
    void checkBurst(std::uint64_t changesBefore, std::size_t length);
    void awaitReading();
    void returnFocus();
    void endText();
    void fail(const std::string& reason);

    // A loan that is not over.
    std::deque<Item>::iterator findBorrower(std::uint32_t xNumber);
    Item& current() { return items_.front(); }
    bool isInFront() const;
    // Whether the target would make other characters of some that are left.
    bool needsInputMethod() const;
    std::u32string_view charactersLeft() const;
    // After the last request of a burst of so many characters.
    void verifyBurst(std::size_t length);
    void tap(TextKeymap::Stroke stroke);
    void report(const std::string& problem, std::size_t characters);
    void wait(std::chrono::milliseconds delay, void (VirtualTypist::*step)());
    bool isLate() const { return std::chrono::steady_clock::now() > targetDeadline_; }

    WaylandConnection& connection_;
    WindowFocus& focus_;
    platform::Log& log_;
    const std::string server_;
    EventLoop& loop_;
    VirtualKeyboard keyboard_;
    // For one text, or a part of it.
    std::optional<InputMethod> inputMethod_;
    TextKeymap keymap_;
    std::uint32_t modifiers_ = 0;
    std::deque<Item> items_;
    bool isBusy_ = false;
    bool hasActivated_ = false;
    WindowFocus::Window target_;
    SteadyTime targetDeadline_;
    SteadyTime burstTime_;
    std::chrono::milliseconds readingDelay_{1};
    Deadline delay_;
    std::function<void()> onIdle_;
};

}  // namespace tarvik::linuxdesktop
