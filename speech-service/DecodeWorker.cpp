// SPDX-License-Identifier: MIT

#include "speech-service/DecodeWorker.h"

#include <algorithm>
#include <boost/asio/post.hpp>
#include <system_error>

#include "speech-service/PcmReader.h"
#include "speech-service/Resampler.h"
#include "speech-service/UtteranceRecognizer.h"

namespace tarvik::service {

namespace {

constexpr std::size_t bytesPerSample = 2;
constexpr Seconds maxQueuedAudio{10};
// The worker checks for its cancellation after each chunk of this length.
constexpr Seconds chunkLength{0.1};

std::size_t bytesIn(Seconds length, int sampleRate) {
    return static_cast<std::size_t>(length.count() * sampleRate) * bytesPerSample;
}

}  // namespace

/// The stages of the decoding thread: samples, resampler, recognizer.
class DecodeWorker::Pipeline {
  public:
    Pipeline(DecodeWorker& worker, Decoder& decoder, Resampler resampler)
        : worker_(worker),
          resampler_(std::move(resampler)),
          recognizer_(decoder, worker.interimResults_,
                      [this](const Utterance& utterance) { report(utterance); }) {}

    void operator()(const std::vector<std::uint8_t>& audio) {
        std::span<const std::uint8_t> rest = audio;
        const std::size_t bytesPerChunk = bytesIn(chunkLength, worker_.sampleRate_);
        while (!rest.empty() && !worker_.isCancelled_) {
            const std::size_t size = std::min(rest.size(), bytesPerChunk);
            recognizer_.process(resampler_.process(pcm_.read(rest.first(size))));
            rest = rest.subspan(size);
        }
    }

    void operator()(Finalize) { recognizer_.finish(); }

    void operator()(End) {
        recognizer_.process(resampler_.finish());
        recognizer_.finish();
    }

  private:
    void report(const Utterance& utterance) {
        worker_.post([&worker = worker_, utterance] { worker.callbacks_.onUtterance(utterance); });
    }

    DecodeWorker& worker_;
    PcmReader pcm_;
    Resampler resampler_;
    UtteranceRecognizer recognizer_;
};

std::shared_ptr<DecodeWorker> DecodeWorker::start(boost::asio::any_io_executor executor,
                                                  std::shared_ptr<DecoderPool> decoders,
                                                  int sampleRate, bool interimResults,
                                                  Callbacks callbacks) {
    std::shared_ptr<DecodeWorker> worker(new DecodeWorker(std::move(executor), std::move(decoders),
                                                          sampleRate, interimResults,
                                                          std::move(callbacks)));
    try {
        worker->thread_ = std::thread([worker] { worker->finish(worker->decode()); });
    } catch (const std::system_error& error) {
        worker->finish(Error{error.code().value(),
                             "there is no thread to decode on: " + error.code().message()});
    }
    return worker;
}

DecodeWorker::DecodeWorker(boost::asio::any_io_executor executor,
                           std::shared_ptr<DecoderPool> decoders, int sampleRate,
                           bool interimResults, Callbacks callbacks)
    : executor_(std::move(executor)),
      workGuard_(executor_),
      decoders_(std::move(decoders)),
      sampleRate_(sampleRate),
      interimResults_(interimResults),
      callbacks_(std::move(callbacks)) {}

bool DecodeWorker::append(std::vector<std::uint8_t> audio) {
    appendedBytes_ += audio.size();
    push(std::move(audio));
    const std::lock_guard lock(mutex_);
    return queuedBytes_ < bytesIn(maxQueuedAudio, sampleRate_);
}

void DecodeWorker::finalize() {
    push(Finalize{});
}

void DecodeWorker::end() {
    push(End{});
}

void DecodeWorker::cancel() {
    const std::lock_guard lock(mutex_);
    isCancelled_ = true;
    wake_.notify_one();
}

Seconds DecodeWorker::appended() const {
    const std::uint64_t samples = appendedBytes_ / bytesPerSample;
    return Seconds(static_cast<double>(samples) / sampleRate_);
}

void DecodeWorker::push(Task task) {
    const std::lock_guard lock(mutex_);
    if (const auto* audio = std::get_if<std::vector<std::uint8_t>>(&task)) {
        queuedBytes_ += audio->size();
    }
    tasks_.push_back(std::move(task));
    wake_.notify_one();
}

std::optional<DecodeWorker::Task> DecodeWorker::pop() {
    const std::size_t half = bytesIn(maxQueuedAudio, sampleRate_) / 2;
    std::unique_lock lock(mutex_);
    wake_.wait(lock, [this] { return isCancelled_ || !tasks_.empty(); });
    if (isCancelled_) {
        return std::nullopt;
    }
    Task task = std::move(tasks_.front());
    tasks_.pop_front();
    if (const auto* audio = std::get_if<std::vector<std::uint8_t>>(&task)) {
        const bool wasHalfFull = queuedBytes_ >= half;
        queuedBytes_ -= audio->size();
        if (wasHalfFull && queuedBytes_ < half) {
            post([this] { callbacks_.onDrained(); });
        }
    }
    return task;
}

void DecodeWorker::finish(const std::optional<Error>& error) {
    post([this, error] { callbacks_.onEnd(error); });
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
    Result<Resampler> resampler = Resampler::create(sampleRate_);
    if (!resampler) {
        return resampler.error();
    }
    Pipeline pipeline(*this, *decoder.value(), std::move(resampler).value());
    while (const std::optional<Task> task = pop()) {
        std::visit(pipeline, *task);
        if (std::holds_alternative<End>(*task)) {
            break;
        }
    }
    return std::nullopt;
}

void DecodeWorker::post(std::function<void()> callback) {
    boost::asio::post(executor_, [self = shared_from_this(), callback = std::move(callback)] {
        if (!self->isCancelled_) {
            callback();
        }
    });
}

}  // namespace tarvik::service
