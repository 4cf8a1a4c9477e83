// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/Accessibility.h"
#include "platform/MainQueue.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/WriteReply.h"

namespace tarvik::linuxdesktop {

/// The writes that a program may still carry out although it has not replied in time, and the
/// writes that wait behind them. The text of such a write is posted as typed text meanwhile, and
/// the typed text is held. The next write of a process begins once the write before has arrived.
/// Texts that wait for the same element become one write, so a slow program gets few writes.
/// When all have arrived, the typed text is dropped. When one has not, its text and all later text
/// is typed. So each text arrives once, and no text overtakes an earlier one. Main thread only;
/// nothing blocks.
class PendingWrites : public std::enable_shared_from_this<PendingWrites> {
  public:
    /// The typing of the desktop.
    struct Typing {
        /// Holds the text that is posted next, behind the text that is held for the process
        /// already. Returns how many UTF-16 units are held already; empty where nothing can be
        /// typed.
        std::function<std::optional<std::size_t>(platform::ProcessIdentifier)> hold;
        /// Types the held text without its first `units` UTF-16 units.
        std::function<void(platform::ProcessIdentifier, std::size_t units)> release;
    };
    /// Starts a write of a text whose status nobody awaits.
    using Start = std::function<std::shared_ptr<WriteReply>(const std::string& text)>;

    /// A text is typed after it has been held for `timeout`; its write is undone if it arrives
    /// later. `mainQueue` outlives the object, which a shared_ptr holds.
    PendingWrites(platform::MainQueue& mainQueue, Typing typing, std::chrono::milliseconds timeout);
    /// Has all held text typed.
    ~PendingWrites();
    PendingWrites(const PendingWrites&) = delete;
    PendingWrites& operator=(const PendingWrites&) = delete;

    /// Whether a write into the process has no outcome yet, or waits for its turn.
    bool isPending(platform::ProcessIdentifier process);
    /// A write of `text` is pending, the first one of the process. Returns the status of that
    /// write; unless it is a success, the caller posts the text as typed text next.
    platform::AXError add(platform::ProcessIdentifier process,
                          const std::shared_ptr<WriteReply>& reply, const std::string& text);
    /// Starts a write of `text` into `element` whose status nobody awaits, the first one of the
    /// process. The caller posts the text as typed text next. False where nothing can be typed; no
    /// write is started then.
    bool begin(platform::ProcessIdentifier process, const platform::AXUIElementRef& element,
               const std::string& text, Start start);
    /// Starts a write of `text` into `element` once the pending writes of the process have arrived.
    /// Only while isPending(). The caller posts the text as typed text next.
    void queue(platform::ProcessIdentifier process, const platform::AXUIElementRef& element,
               const std::string& text, Start start);

  private:
    struct Write {
        std::uint64_t number;
        platform::AXUIElementRef element;
        std::string text;
        /// Of the text, in UTF-16.
        std::size_t units;
        Start start;
        /// Empty until the write has been started.
        std::shared_ptr<WriteReply> reply;
    };
    /// The writes of one process. The first one is started, and the others wait for it.
    struct Queue {
        std::deque<Write> writes;
        /// The length of the held text whose writes have arrived.
        std::size_t arrivedUnits = 0;

        std::size_t heldUnits() const;
        /// Gives up the first write; returns the length of the held text that has arrived.
        std::size_t giveUp() const;
    };

    void append(platform::ProcessIdentifier process, Write write);
    void whenSettled(platform::ProcessIdentifier process, WriteReply& reply);
    void advance(platform::ProcessIdentifier process);
    void expire(platform::ProcessIdentifier process, std::uint64_t number);
    void end(platform::ProcessIdentifier process, std::size_t arrivedUnits);

    platform::MainQueue& mainQueue_;
    const Typing typing_;
    const std::chrono::milliseconds timeout_;
    std::map<platform::ProcessIdentifier, Queue> queues_;
    std::uint64_t lastNumber_ = 0;
};

}  // namespace tarvik::linuxdesktop
