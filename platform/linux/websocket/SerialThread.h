// SPDX-License-Identifier: MIT
#pragma once

#include <boost/asio/io_context.hpp>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "platform/linux/websocket/ThreadRegistry.h"

namespace tarvik::linuxdesktop {

/// A serial queue on a thread, which runs only while blocks, timers or sockets wait.
///
/// A pending operation on context() must hold this object.
class SerialThread final : public std::enable_shared_from_this<SerialThread> {
  public:
    explicit SerialThread(std::shared_ptr<ThreadRegistry> threads);

    /// Runs `block` on the thread after the blocks posted before. When the system has no thread or
    /// no file descriptor left, the block waits for the next post(). Any thread; never blocks.
    /// After close() the block is destroyed without being run.
    void post(std::function<void()> block);
    /// Refuses further blocks, and destroys those that wait for a thread. Runs `last` after the
    /// blocks posted before, if the thread runs at all. `last` must cancel every pending operation
    /// on context(). Any thread; never blocks.
    void close(std::function<void()> last);

    /// The context of timers and sockets that complete on the thread. Used on the thread.
    boost::asio::io_context& context() { return *context_; }

  private:
    bool hasContext();
    void run();

    const std::shared_ptr<ThreadRegistry> threads_;
    /// Made for the first block, because the context needs file descriptors.
    std::unique_ptr<boost::asio::io_context> context_;
    std::mutex mutex_;
    bool isRunning_ = false;
    bool isClosed_ = false;
    std::uint64_t postCount_ = 0;
    /// The blocks that no thread has been found for.
    std::deque<std::function<void()>> waiting_;
};

}  // namespace tarvik::linuxdesktop
