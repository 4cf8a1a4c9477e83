// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "platform/Workspace.h"
#include "platform/linux/ibus/IbusEngine.h"
#include "platform/linux/input/SessionTypist.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// Commits texts by an engine of IBus, one after the other. Loop thread only.
///
/// A committed text goes to the field that has the keyboard. So the field is waited for before each
/// piece and compared after it. No text is committed twice.
class IbusTypist final : public SessionTypist {
  public:
    struct Session {
        /// Whether a process has the keyboard; empty where the session does not tell.
        std::function<bool(platform::ProcessIdentifier)> isInFront;
        /// Calls back when the compositor has passed on what IBus has told it, or does not answer.
        std::function<void(std::function<void()> onDone)> sync;
    };

    /// The references outlive the object.
    IbusTypist(IbusEngine& engine, EventLoop& loop, platform::Log& log, Session session);
    ~IbusTypist() override;
    IbusTypist(const IbusTypist&) = delete;
    IbusTypist& operator=(const IbusTypist&) = delete;

    /// IBus knows no windows: `window` does not count.
    void type(TypedText text, std::int64_t window, std::function<void()> onTyped) override;
    void whenIdle(std::function<void()> onIdle) override;

    /// The engine has got or lost a field.
    void handleField();
    /// The engine cannot be used; every text is lost.
    void handleRefusal(const std::string& reason);

  private:
    struct Item {
        TypedText text;
        std::function<void()> onTyped;
        // How many characters have been committed.
        std::size_t position = 0;
    };

    void beginNext();
    void findTarget();
    void sendPiece();
    void checkPiece(std::uint64_t fieldCount, std::size_t length);
    void endText();
    void fail(const std::string& reason);
    void report(const std::string& problem, std::size_t characters);
    Item& current() { return items_.front(); }

    IbusEngine& engine_;
    platform::Log& log_;
    Session session_;
    std::deque<Item> items_;
    std::function<void()> onIdle_;
    // The engine has been acquired.
    bool isUsing_ = false;
    // The first text waits for its target.
    bool isWaiting_ = false;
    // Tells the replies about a text that has failed meanwhile.
    std::uint64_t textCount_ = 0;
    SteadyTime targetDeadline_;
    Deadline delay_;
};

}  // namespace tarvik::linuxdesktop
