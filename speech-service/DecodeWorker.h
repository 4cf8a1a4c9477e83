// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <atomic>
#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
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
#include "speech-service/Metrics.h"
#include "speech-service/RecognitionOptions.h"
#include "speech-service/Utterance.h"

namespace tarvik::service {

/// Decodes one stream on a thread of its own.
///
/// The operations are called on the owner's executor and never block. The callbacks are called on
/// the same executor. The thread holds the worker, the callbacks and the executor's context until
/// the thread's end.
class DecodeWorker : public std::enable_shared_from_this<DecodeWorker> {
  public:
    struct Options {
        /// The rate of the audio in hertz.
        int sampleRate = 0;
        RecognitionOptions recognition;
        /// The time after end() at which a live stream has its words, as far as they are known.
        Seconds endDeadline{1.5};
        /// Counts the stream's audio and delays.
        std::shared_ptr<Metrics> metrics = std::make_shared<Metrics>();
    };

    struct Callbacks {
        std::function<void(Utterance)> onUtterance;
        /// Speech has begun at this time of the stream.
        std::function<void(Seconds)> onSpeechStarted = [](Seconds) {};
        /// No word has come for some time after this end of a word.
        std::function<void(Seconds)> onUtteranceEnd = [](Seconds) {};
        /// The queued audio has fallen below half of append()'s limit.
        std::function<void()> onDrained;
        /// Without an error: all audio before end() has been decoded. With an error: no decoder,
        /// resampler or thread is available.
        std::function<void(std::optional<Error>)> onEnd;
    };

    /// Starts the thread.
    static std::shared_ptr<DecodeWorker> start(boost::asio::any_io_executor executor,
                                               std::shared_ptr<DecoderPool> decoders,
                                               const Options& options, Callbacks callbacks);

    /// Queues audio: linear16, which may be cut inside a sample. False when 30 s or more are
    /// queued; the next append should wait for onDrained then.
    bool append(std::vector<std::uint8_t> audio);

    /// Ends the current utterance after the queued audio.
    void finalize();

    /// Decodes the queued audio and then ends the thread.
    ///
    /// If the audio came no faster than people speak, its sender waits as people do. Then the words
    /// that the first pass knows at the deadline are reported as final. The stream ends with them
    /// if they cover all audio. Otherwise the stream ends when the first pass has covered all
    /// audio, and the words since the deadline are reported then.
    void end();

    /// Ends the thread within the decoding of 0.1 s of audio. The end of an utterance takes longer
    /// with a decoder that cannot abort, and has the lowest priority then. No callback is called
    /// after this.
    void cancel();

    /// The total length of the appended audio.
    Seconds appended() const;

  private:
    using Clock = std::chrono::steady_clock;
    struct Finalize {};
    struct End {};
    struct Task {
        std::variant<std::vector<std::uint8_t>, Finalize, End> content;
        Clock::time_point arrival;
    };
    class Pipeline;

    DecodeWorker(boost::asio::any_io_executor executor, std::shared_ptr<DecoderPool> decoders,
                 const Options& options, Callbacks callbacks);
    void push(decltype(Task::content) content);
    std::optional<Task> pop();
    std::optional<Error> decode();
    void finish(const std::optional<Error>& error);
    void onDeadline();
    /// Reports the unfinished words as final. With mutex_ locked.
    void reportUnfinished();
    void deliver(const std::vector<Utterance>& utterances, bool isComplete);
    void keepUnfinished(std::vector<Utterance> utterances, bool isAllAudio, Seconds position);
    /// Leaves what the owner does not know yet. With mutex_ locked.
    void eraseReported(std::vector<Utterance>& utterances) const;
    void report(Utterance utterance);
    /// The decoder that cancel() aborts, which the calling thread uses. Null ends that.
    void lend(Decoder* decoder);
    void post(std::function<void()> callback);

    const boost::asio::any_io_executor executor_;
    boost::asio::executor_work_guard<boost::asio::any_io_executor> workGuard_;
    const std::shared_ptr<DecoderPool> decoders_;
    const Options options_;
    const Clock::time_point start_ = Clock::now();
    Callbacks callbacks_;
    boost::asio::steady_timer deadlineTimer_;
    std::uint64_t appendedBytes_ = 0;
    /// Whether the audio has come as slowly as people speak.
    bool isLive_ = true;

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<Task> tasks_;
    std::size_t queuedBytes_ = 0;
    /// The words that the deadline would report.
    std::vector<Utterance> unfinished_;
    /// Whether no word can follow the unfinished ones.
    bool isUnfinishedComplete_ = false;
    /// Whether the deadline has passed.
    bool isOverdue_ = false;
    /// Words before this time of the stream are known to the owner.
    Seconds reportedUntil_{};
    Decoder* decoder_ = nullptr;
    /// The thread that uses the decoder.
    pid_t threadId_ = 0;
    std::atomic<bool> isCancelled_ = false;
    std::thread thread_;
};

}  // namespace tarvik::service
