// SPDX-License-Identifier: MIT
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
/// The operations are called on the owner's executor and never block. The callbacks are called on
/// the same executor. The thread holds the worker, the callbacks and the executor's context until
/// the thread's end.
class DecodeWorker : public std::enable_shared_from_this<DecodeWorker> {
  public:
    struct Callbacks {
        std::function<void(Utterance)> onUtterance;
        /// The queued audio has fallen below half of append()'s limit.
        std::function<void()> onDrained;
        /// Without an error: all audio before end() has been decoded. With an error: no decoder,
        /// resampler or thread is available.
        std::function<void(std::optional<Error>)> onEnd;
    };

    /// Starts the thread. `sampleRate` is the rate of the audio in hertz.
    static std::shared_ptr<DecodeWorker> start(boost::asio::any_io_executor executor,
                                               std::shared_ptr<DecoderPool> decoders,
                                               int sampleRate, bool interimResults,
                                               Callbacks callbacks);

    /// Queues audio: linear16, which may be cut inside a sample. False when 10 s or more are
    /// queued; the next append should wait for onDrained then.
    bool append(std::vector<std::uint8_t> audio);

    /// Ends the current utterance after the queued audio.
    void finalize();

    /// Decodes the queued audio and then ends the thread.
    void end();

    /// Ends the thread within the decoding of 0.1 s of audio. No callback is called after this.
    void cancel();

    /// The total length of the appended audio.
    Seconds appended() const;

  private:
    struct Finalize {};
    struct End {};
    using Task = std::variant<std::vector<std::uint8_t>, Finalize, End>;
    class Pipeline;

    DecodeWorker(boost::asio::any_io_executor executor, std::shared_ptr<DecoderPool> decoders,
                 int sampleRate, bool interimResults, Callbacks callbacks);
    void push(Task task);
    std::optional<Task> pop();
    std::optional<Error> decode();
    void finish(const std::optional<Error>& error);
    void post(std::function<void()> callback);

    const boost::asio::any_io_executor executor_;
    boost::asio::executor_work_guard<boost::asio::any_io_executor> workGuard_;
    const std::shared_ptr<DecoderPool> decoders_;
    const int sampleRate_;
    const bool interimResults_;
    Callbacks callbacks_;
    std::uint64_t appendedBytes_ = 0;

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Task> tasks_;
    std::size_t queuedBytes_ = 0;
    std::atomic<bool> isCancelled_ = false;
    std::thread thread_;
};

}  // namespace tarvik::service
