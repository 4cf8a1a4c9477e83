#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <variant>
#include <vector>

#include "base/Error.h"
#include "base/Time.h"
#include "speech-service/DecoderPool.h"
#include "speech-service/Utterance.h"

namespace tarvik::service {

/// Decodes one stream on a thread of its own.
///
/// Its operations are called on the owner's executor and never block; the callbacks come there too.
/// The thread keeps the worker, its callbacks and the executor's context until it has ended.
class DecodeWorker : public std::enable_shared_from_this<DecodeWorker> {
  public:
    struct Callbacks {
        std::function<void(Utterance)> onUtterance;
        /// The audio that waits has fallen below half of what append calls enough.
        std::function<void()> onRoom;
        /// After end: everything was answered. With an error: no decoder could be had.
        std::function<void(std::optional<Error>)> onEnd;
    };

    /// Starts the thread. `sampleRate` is that of the audio to come, in hertz.
    static std::shared_ptr<DecodeWorker> start(boost::asio::any_io_executor executor,
                                               std::shared_ptr<DecoderPool> decoders,
                                               int sampleRate, bool interimResults,
                                               Callbacks callbacks);

    /// Queues audio (linear16, cut anywhere). False when ten seconds of it wait: no more should be
    /// appended until onRoom.
    bool append(std::vector<std::uint8_t> audio);

    /// Ends the current utterance after the audio queued so far.
    void finalize();

    /// Answers the audio queued so far and then ends the thread.
    void end();

    /// Ends the thread as soon as it can; no callback is posted after that.
    void cancel();

    /// The length of the audio appended so far.
    Seconds appended() const;

  private:
    struct Finalize {};
    struct End {};
    using Task = std::variant<std::vector<std::uint8_t>, Finalize, End>;
    class Session;

    DecodeWorker(boost::asio::any_io_executor executor, std::shared_ptr<DecoderPool> decoders,
                 int sampleRate, bool interimResults, Callbacks callbacks);
    void push(Task task);
    std::optional<Task> pop();
    void run();
    std::optional<Error> decode();
    void post(std::function<void()> callback);

    const boost::asio::any_io_executor executor_;
    boost::asio::executor_work_guard<boost::asio::any_io_executor> keepRunning_;
    const std::shared_ptr<DecoderPool> decoders_;
    const int sampleRate_;
    const bool interimResults_;
    Callbacks callbacks_;
    std::uint64_t appendedBytes_ = 0;

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Task> tasks_;
    std::size_t waitingBytes_ = 0;
    std::atomic<bool> isCancelled_ = false;
    std::thread thread_;
};

}  // namespace tarvik::service
