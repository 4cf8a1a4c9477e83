#pragma once

#include <boost/asio/io_context.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

#include "platform/linux/websocket/SessionThreads.h"

namespace tarvik::linuxdesktop {

/// A serial queue with a thread that is there while something is to be done: blocks, timers,
/// sockets. What keeps a timer or socket on `context()` must keep this object too.
class SerialThread final : public std::enable_shared_from_this<SerialThread> {
  public:
    explicit SerialThread(std::shared_ptr<SessionThreads> threads);

    /// Runs `block` on the thread after the blocks posted before. Any thread; never blocks. After
    /// close() the block is destroyed without being run.
    void post(std::function<void()> block);
    /// Runs `last` on the thread if there is one; what is still waiting on the context must end by
    /// it. Any thread.
    void close(std::function<void()> last);

    /// Timers and sockets that complete on the thread; used on the thread.
    boost::asio::io_context& context() { return context_; }

  private:
    void run();

    const std::shared_ptr<SessionThreads> threads_;
    boost::asio::io_context context_{1};
    std::mutex mutex_;
    bool isRunning_ = false;
    bool isClosed_ = false;
    std::uint64_t posted_ = 0;
};

}  // namespace tarvik::linuxdesktop
