// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/Accessibility.h"
#include "platform/MainQueue.h"
#include "platform/Workspace.h"
#include "platform/linux/accessibility/WriteReply.h"

namespace tarvik::linuxdesktop {

/// The writes that a program may still carry out although it has not replied in time. The text of
/// such a write is posted as typed text meanwhile, and that typed text is held. If the write turns
/// out to have arrived, the typed text is dropped. Otherwise it is typed. So the text arrives once,
/// and no later text overtakes it. Main thread only.
class PendingWrites : public std::enable_shared_from_this<PendingWrites> {
  public:
    /// The typing of the desktop.
    struct Typing {
        /// Holds the text that is posted for a process from here on. False where nothing can be
        /// typed.
        std::function<bool(platform::ProcessIdentifier)> hold;
        /// Types the held text without its first `units` UTF-16 units.
        std::function<void(platform::ProcessIdentifier, std::size_t units)> release;
    };

    /// The held text is typed after `timeout`; a write that arrives later is undone. `mainQueue`
    /// outlives the object, which a shared_ptr holds.
    PendingWrites(platform::MainQueue& mainQueue, Typing typing, std::chrono::milliseconds timeout);
    /// Has all held text typed.
    ~PendingWrites();
    PendingWrites(const PendingWrites&) = delete;
    PendingWrites& operator=(const PendingWrites&) = delete;

    /// Blocks until no write into the process is pending; false when `deadline` passes first.
    /// Blocks only once for each pending write.
    bool settle(platform::ProcessIdentifier process, SteadyTime deadline);
    /// A write of `text` is pending. Returns the status of that write; unless it is a success, the
    /// caller posts the text as typed text next.
    platform::AXError add(platform::ProcessIdentifier process, std::shared_ptr<WriteReply> reply,
                          const std::string& text);

  private:
    struct Pending {
        std::shared_ptr<WriteReply> reply;
        std::size_t units = 0;
        bool wasAwaited = false;
    };

    void finishIfSettled(platform::ProcessIdentifier process);
    void finish(platform::ProcessIdentifier process, const std::shared_ptr<WriteReply>& reply,
                bool hasArrived);

    platform::MainQueue& mainQueue_;
    const Typing typing_;
    const std::chrono::milliseconds timeout_;
    std::map<platform::ProcessIdentifier, Pending> pending_;
};

}  // namespace tarvik::linuxdesktop
