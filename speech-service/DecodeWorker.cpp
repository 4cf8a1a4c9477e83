// SPDX-License-Identifier: MIT

#include "speech-service/DecodeWorker.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <boost/asio/post.hpp>
#include <limits>
#include <system_error>
#include <utility>

#include "base/Weakly.h"
#include "speech-service/PcmReader.h"
#include "speech-service/Resampler.h"
#include "speech-service/UtteranceRecognizer.h"

namespace tarvik::service {

namespace {

constexpr std::size_t bytesPerSample = 2;
constexpr Seconds maxQueuedAudio{30};
// The worker checks for its cancellation after each chunk of this length.
constexpr Seconds chunkLength{0.1};
// The audio of a live stream is never longer than the stream is old, but for what buffers held.
constexpr Seconds liveTolerance{0.5};
constexpr int lowestPriority = 19;
constexpr Seconds unlimited{std::numeric_limits<double>::infinity()};

std::size_t bytesIn(Seconds length, int sampleRate) {
    return static_cast<std::size_t>(length.count() * sampleRate) * bytesPerSample;
}

void eraseWordsBefore(Seconds time, Utterance& utterance) {
    std::erase_if(utterance.words,
                  [time](const Word& word) { return (word.start + word.end) / 2 < time; });
}

}  // namespace

/// The stages of the decoding thread: samples, resampler, recognizer.
class DecodeWorker::Pipeline {
  public:
    Pipeline(DecodeWorker& worker, Decoder& decoder, Resampler resampler)
        : worker_(worker),
          resampler_(std::move(resampler)),
          recognizer_(decoder, worker.options_.recognition, handlers()) {}

    void operator()(const Task& task) {
        arrival_ = task.arrival;
        const Clock::time_point start = Clock::now();
        const Seconds position = recognizer_.position();
        std::visit(*this, task.content);
        worker_.options_.metrics->addDecoding(recognizer_.position() - position,
                                              Clock::now() - start);
    }

    void operator()(const std::vector<std::uint8_t>& audio) {
        std::span<const std::uint8_t> rest = audio;
        const std::size_t bytesPerChunk = bytesIn(chunkLength, worker_.options_.sampleRate);
        while (!rest.empty() && !worker_.isCancelled_) {
            const std::size_t size = std::min(rest.size(), bytesPerChunk);
            recognizer_.process(resampler_.process(pcm_.read(rest.first(size))));
            rest = rest.subspan(size);
            keepUnfinished(recognizer_.unfinished());
        }
    }

    void operator()(Finalize) { recognizer_.finish(); }

    void operator()(End) {
        recognizer_.process(resampler_.finish());
        isAllAudio_ = true;
        keepUnfinished(recognizer_.unfinished());
        recognizer_.finish();
    }

  private:
    UtteranceRecognizer::Handlers handlers() {
        UtteranceRecognizer::Handlers handlers;
        handlers.onUtterance = [this](const Utterance& utterance) {
            if (utterance.isFinal) {
                worker_.options_.metrics->addFinal(Clock::now() - arrival_);
            }
            worker_.report(utterance);
        };
        handlers.onSettling = [this](const std::vector<Utterance>& unfinished) {
            keepUnfinished(unfinished);
        };
        handlers.onSpeechStarted = [&worker = worker_](Seconds time) {
            worker.post([&worker, time] { worker.callbacks_.onSpeechStarted(time); });
        };
        handlers.onUtteranceEnd = [&worker = worker_](Seconds time) {
            worker.post([&worker, time] { worker.callbacks_.onUtteranceEnd(time); });
        };
        return handlers;
    }

    void keepUnfinished(std::vector<Utterance> utterances) {
        worker_.keepUnfinished(std::move(utterances), isAllAudio_, recognizer_.position());
    }

    DecodeWorker& worker_;
    PcmReader pcm_;
    Resampler resampler_;
    UtteranceRecognizer recognizer_;
    Clock::time_point arrival_;
    bool isAllAudio_ = false;
};

std::shared_ptr<DecodeWorker> DecodeWorker::start(boost::asio::any_io_executor executor,
                                                  std::shared_ptr<DecoderPool> decoders,
                                                  const Options& options, Callbacks callbacks) {
    std::shared_ptr<DecodeWorker> worker(
        new DecodeWorker(std::move(executor), std::move(decoders), options, std::move(callbacks)));
    try {
        worker->thread_ = std::thread([worker] { worker->finish(worker->decode()); });
    } catch (const std::system_error& error) {
        worker->finish(Error{error.code().value(),
                             "there is no thread to decode on: " + error.code().message()});
    }
    return worker;
}

DecodeWorker::DecodeWorker(boost::asio::any_io_executor executor,
                           std::shared_ptr<DecoderPool> decoders, const Options& options,
                           Callbacks callbacks)
    : executor_(std::move(executor)),
      workGuard_(executor_),
      decoders_(std::move(decoders)),
      options_(options),
      callbacks_(std::move(callbacks)),
      deadlineTimer_(executor_) {}

bool DecodeWorker::append(std::vector<std::uint8_t> audio) {
    appendedBytes_ += audio.size();
    isLive_ = isLive_ && appended() <= Seconds(Clock::now() - start_) + liveTolerance;
    push(std::move(audio));
    const std::lock_guard lock(mutex_);
    return queuedBytes_ < bytesIn(maxQueuedAudio, options_.sampleRate);
}

void DecodeWorker::finalize() {
    push(Finalize{});
}

void DecodeWorker::end() {
    push(End{});
    if (isLive_) {
        deadlineTimer_.expires_after(
            std::chrono::duration_cast<Clock::duration>(options_.endDeadline));
        deadlineTimer_.async_wait(weakly(*this, [](DecodeWorker& self, auto error) {
            if (!error) {
                self.onDeadline();
            }
        }));
    }
}

void DecodeWorker::cancel() {
    deadlineTimer_.cancel();
    const std::lock_guard lock(mutex_);
    isCancelled_ = true;
    if (decoder_) {
        decoder_->abort();
        // A decoder that cannot abort must not slow the next stream down. A system that forbids
        // this changes nothing else.
        setpriority(PRIO_PROCESS, static_cast<id_t>(threadId_), lowestPriority);
    }
    wake_.notify_one();
}

Seconds DecodeWorker::appended() const {
    const std::uint64_t samples = appendedBytes_ / bytesPerSample;
    return Seconds(static_cast<double>(samples) / options_.sampleRate);
}

void DecodeWorker::onDeadline() {
    const std::lock_guard lock(mutex_);
    isOverdue_ = true;
    reportUnfinished();
}

void DecodeWorker::reportUnfinished() {
    std::vector<Utterance> utterances = std::exchange(unfinished_, {});
    const bool isComplete = isUnfinishedComplete_;
    if (isComplete) {
        reportedUntil_ = unlimited;
    } else if (!utterances.empty()) {
        Utterance& last = utterances.back();
        reportedUntil_ = last.start + last.duration;
        last.isSentenceEnd = false;
        last.isSpeechFinal = false;
    }
    // Behind everything that the thread has posted so far.
    post([this, utterances = std::move(utterances), isComplete] {
        deliver(utterances, isComplete);
    });
}

void DecodeWorker::deliver(const std::vector<Utterance>& utterances, bool isComplete) {
    for (const Utterance& utterance : utterances) {
        callbacks_.onUtterance(utterance);
    }
    if (isComplete) {
        callbacks_.onEnd(std::nullopt);
        cancel();
    }
}

void DecodeWorker::keepUnfinished(std::vector<Utterance> utterances, bool isAllAudio,
                                  Seconds position) {
    const std::lock_guard lock(mutex_);
    if (reportedUntil_ == unlimited) {
        return;
    }
    const Seconds end =
        utterances.empty() ? Seconds(0) : utterances.back().start + utterances.back().duration;
    eraseReported(utterances);
    // Without words the first pass may have understood nothing, or not have begun.
    const bool isCovered = !utterances.empty() && end >= position - SpeechDetector::frameLength;
    isUnfinishedComplete_ = isAllAudio && isCovered;
    unfinished_ = std::move(utterances);
    if (isOverdue_ && isUnfinishedComplete_) {
        reportUnfinished();
    }
}

void DecodeWorker::eraseReported(std::vector<Utterance>& utterances) const {
    if (reportedUntil_ == Seconds(0)) {
        return;
    }
    for (Utterance& utterance : utterances) {
        eraseWordsBefore(reportedUntil_, utterance);
        utterance.isContinuation = true;
    }
    std::erase_if(utterances, [](const Utterance& each) { return each.words.empty(); });
}

void DecodeWorker::report(Utterance utterance) {
    const std::lock_guard lock(mutex_);
    eraseWordsBefore(reportedUntil_, utterance);
    if (reportedUntil_ > Seconds(0)) {
        if (utterance.words.empty()) {
            return;
        }
        utterance.isContinuation = true;
    }
    if (utterance.isFinal) {
        // The words of the next utterance may be among them.
        for (Utterance& unfinished : unfinished_) {
            eraseWordsBefore(utterance.start + utterance.duration, unfinished);
        }
        std::erase_if(unfinished_, [](const Utterance& each) { return each.words.empty(); });
    }
    post([this, utterance = std::move(utterance)] { callbacks_.onUtterance(utterance); });
}

void DecodeWorker::push(decltype(Task::content) content) {
    const std::lock_guard lock(mutex_);
    if (const auto* audio = std::get_if<std::vector<std::uint8_t>>(&content)) {
        queuedBytes_ += audio->size();
    }
    tasks_.push_back({std::move(content), Clock::now()});
    wake_.notify_one();
}

std::optional<DecodeWorker::Task> DecodeWorker::pop() {
    const std::size_t half = bytesIn(maxQueuedAudio, options_.sampleRate) / 2;
    std::unique_lock lock(mutex_);
    wake_.wait(lock, [this] { return isCancelled_ || !tasks_.empty(); });
    if (isCancelled_) {
        return std::nullopt;
    }
    Task task = std::move(tasks_.front());
    tasks_.pop_front();
    if (const auto* audio = std::get_if<std::vector<std::uint8_t>>(&task.content)) {
        const bool wasHalfFull = queuedBytes_ >= half;
        queuedBytes_ -= audio->size();
        if (wasHalfFull && queuedBytes_ < half) {
            post([this] { callbacks_.onDrained(); });
        }
    }
    return task;
}

void DecodeWorker::finish(const std::optional<Error>& error) {
    post([this, error] {
        callbacks_.onEnd(error);
        // The deadline may have passed: its callback must not follow the end.
        cancel();
    });
    // Not through post(), which drops the callback of a cancelled worker: the join must happen.
    boost::asio::post(executor_, [self = shared_from_this()] {
        if (self->thread_.joinable()) {
            self->thread_.join();
        }
        self->callbacks_ = {};
        self->workGuard_.reset();
    });
}

std::optional<Error> DecodeWorker::decode() {
    const Result<DecoderPool::Lease> decoder = decoders_->acquire();
    if (!decoder) {
        return decoder.error();
    }
    Result<Resampler> resampler = Resampler::create(options_.sampleRate);
    if (!resampler) {
        return resampler.error();
    }
    Pipeline pipeline(*this, *decoder.value(), std::move(resampler).value());
    lend(decoder.value().get());
    while (const std::optional<Task> task = pop()) {
        pipeline(*task);
        if (std::holds_alternative<End>(task->content)) {
            break;
        }
    }
    lend(nullptr);
    return std::nullopt;
}

void DecodeWorker::lend(Decoder* decoder) {
    const std::lock_guard lock(mutex_);
    decoder_ = decoder;
    threadId_ = decoder ? gettid() : 0;
}

void DecodeWorker::post(std::function<void()> callback) {
    boost::asio::post(executor_, [self = shared_from_this(), callback = std::move(callback)] {
        if (!self->isCancelled_) {
            callback();
        }
    });
}

}  // namespace tarvik::service
