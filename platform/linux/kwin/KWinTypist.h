// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>

#include "platform/Log.h"
#include "platform/linux/input/SessionTypist.h"
#include "platform/linux/kwin/FocusedField.h"
#include "platform/linux/loop/EventLoop.h"
#include "platform/linux/wayland/WindowFocus.h"

namespace tarvik::linuxdesktop {

/// Types texts as the input method of a KWin session, one after the other. Loop thread only.
///
/// A text goes to the text field that has the keyboard when it reaches KWin. So the focus is asked
/// for before each text and after it. Nothing is typed twice.
class KWinTypist final : public SessionTypist {
  public:
    /// The references outlive the object.
    KWinTypist(WindowFocus& focus, FocusedField& field, EventLoop& loop, platform::Log& log);
    ~KWinTypist() override;
    KWinTypist(const KWinTypist&) = delete;
    KWinTypist& operator=(const KWinTypist&) = delete;

    void type(TypedText text, std::int64_t window, std::function<void()> onTyped) override;
    void whenIdle(std::function<void()> onIdle) override;

  private:
    struct Item {
        TypedText text;
        std::int64_t window = 0;
        std::function<void()> onTyped;
    };

    void beginNext();
    // Each step ends with the next one, or with the end of the text.
    void findTarget();
    void lookAtFocus();
    void activateTarget();
    void awaitField();
    void commit();
    void checkFocus(std::uint64_t changesBefore);
    bool isCurrent(std::uint64_t number) const { return !items_.empty() && number == number_; }
    void endText();
    void fail(const std::string& reason);

    Item& current() { return items_.front(); }
    bool isInFront() const;
    void report(const std::string& problem, std::size_t characters);

    WindowFocus& focus_;
    FocusedField& field_;
    platform::Log& log_;
    std::deque<Item> items_;
    // Of the first item. Tells a late answer.
    std::uint64_t number_ = 0;
    bool isBusy_ = false;
    bool hasActivated_ = false;
    WindowFocus::Window target_;
    SteadyTime targetDeadline_;
    Deadline delay_;
    // For a KWin that ends the connection, and so answers no more.
    Deadline answerDeadline_;
    // Gives the input method back.
    Deadline idleDeadline_;
    std::function<void()> onIdle_;
};

}  // namespace tarvik::linuxdesktop
