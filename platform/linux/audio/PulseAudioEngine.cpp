// SPDX-License-Identifier: MIT

#include "platform/linux/audio/PulseAudioEngine.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

/// The tap's own size is not known yet when a stream is opened.
constexpr std::uint32_t fragmentFrames = 2048;
/// A stop comes 0.3 s after the last word and drops a buffer that is not full. A fragment of the
/// server and a buffer together must be shorter than that, at every rate.
constexpr Seconds maxBufferDuration{0.05};
/// The connection of a recording opens within this time or not at all.
constexpr Seconds unusedStreamTimeout{5};
/// The log tells of a microphone that has delivered nothing for this time.
constexpr Seconds maxSilentTime{3};

platform::AudioFormat formatOf(const Microphone& microphone) {
    return {static_cast<double>(microphone.sampleRate), microphone.channels.channels};
}

std::uint32_t limitedFrames(std::uint32_t frameCount, const Microphone& microphone) {
    const double limit = microphone.sampleRate * maxBufferDuration.count();
    return std::min(frameCount, static_cast<std::uint32_t>(limit));
}

}  // namespace

PulseAudioEngine::PulseAudioEngine(std::shared_ptr<PulseServer> server)
    : server_(std::move(server)),
      closeTimer_(server_->api()),
      failureTimer_(server_->api()),
      deliveryTimer_(server_->api()) {}

PulseAudioEngine::~PulseAudioEngine() {
    stop();
}

platform::AudioFormat PulseAudioEngine::inputFormatForBus(std::uint32_t bus) {
    const auto lock = server_->lock();
    if (bus != 0 || !server_->microphone()) {
        return {};
    }
    if (!isRunning_) {
        prepareStream();
    }
    const Microphone& microphone = *server_->microphone();
    return formatOf(hasStreamOf(microphone) ? stream_->microphone() : microphone);
}

// A source may report another rate once it runs. The stream keeps the rate that it was opened with,
// and the server resamples.
bool PulseAudioEngine::hasStreamOf(const Microphone& microphone) const {
    return stream_ && stream_->isGood() && stream_->microphone().isSameSource(microphone);
}

void PulseAudioEngine::prepare() {
    const auto lock = server_->lock();
    if (server_->microphone() && !isRunning_) {
        prepareStream();
    }
}

void PulseAudioEngine::prepareStream() {
    if (openStream()) {
        closeTimer_.start(server_->context(), unusedStreamTimeout, [this] { stream_.reset(); });
    }
}

// Opens the default microphone's stream unless that stream is open; false on failure.
bool PulseAudioEngine::openStream() {
    const Microphone& microphone = *server_->microphone();
    if (!hasStreamOf(microphone)) {
        stream_ = std::make_unique<RecordStream>(server_->context(), microphone,
                                                 limitedFrames(fragmentFrames, microphone),
                                                 streamEvents());
    }
    return stream_->isGood();
}

std::optional<Error> PulseAudioEngine::start() {
    const auto lock = server_->lock();
    if (isRunning_ && stream_->isGood()) {
        return std::nullopt;
    }
    isRunning_ = false;
    deliveryTimer_.cancel();
    if (!server_->isReady()) {
        return Error{PA_ERR_CONNECTIONREFUSED, "no sound server answers"};
    }
    if (!server_->microphone()) {
        return Error{PA_ERR_NOENTITY, "the sound server has no microphone as its default source"};
    }
    isRunning_ = openStream();
    if (!isRunning_) {
        const int code = pa_context_errno(server_->context());
        stream_.reset();
        return Error{code, std::string("the microphone cannot be opened: ") + pa_strerror(code)};
    }
    closeTimer_.cancel();
    failureTimer_.cancel();
    stream_->uncork();
    lastDelivery_ = pa_rtclock_now();
    awaitSound(maxSilentTime);
    return std::nullopt;
}

void PulseAudioEngine::stop() {
    const auto lock = server_->lock();
    isRunning_ = false;
    closeTimer_.cancel();
    failureTimer_.cancel();
    deliveryTimer_.cancel();
    stream_.reset();
    buffer_.reset();
}

void PulseAudioEngine::awaitSound(Seconds delay) {
    deliveryTimer_.start(server_->context(), delay, [this] { checkDelivery(); });
}

void PulseAudioEngine::checkDelivery() {
    const Seconds silence = std::chrono::microseconds(pa_rtclock_now() - lastDelivery_);
    if (silence < maxSilentTime) {
        awaitSound(maxSilentTime - silence);
        return;
    }
    server_->log("the microphone " + stream_->microphone().name + " has delivered nothing for 3 s");
}

void PulseAudioEngine::installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                       const platform::AudioFormat&,
                                       platform::AudioTapBlock block) {
    if (bus != 0) {
        return;
    }
    const auto lock = server_->lock();
    // The given format is the default microphone's, and every stream delivers in that format.
    tap_ = Tap{bufferSize, std::move(block)};
}

void PulseAudioEngine::removeTapOnBus(std::uint32_t bus) {
    if (bus != 0) {
        return;
    }
    // Destroyed after the lock is released: the block may hold objects of any kind.
    std::optional<Tap> removed;
    {
        const auto lock = server_->lock();
        buffer_.reset();
        removed = std::exchange(tap_, std::nullopt);
    }
}

RecordStream::Events PulseAudioEngine::streamEvents() {
    return {[this](const float* samples, std::size_t frameCount) { deliver(samples, frameCount); },
            [this](bool isSuspended) {
                server_->configurationChanged(isSuspended ? "microphone suspended"
                                                          : "microphone resumed");
            },
            [this](const std::string& reason) { handleFailure(reason); }};
}

void PulseAudioEngine::deliver(const float* samples, std::size_t frameCount) {
    server_->resetStreamFailures();
    lastDelivery_ = pa_rtclock_now();
    if (!tap_) {
        return;
    }
    if (!buffer_) {
        const Microphone& microphone = stream_->microphone();
        buffer_.emplace(limitedFrames(tap_->bufferSize, microphone), formatOf(microphone),
                        tap_->block);
    }
    buffer_->append(samples, frameCount);
}

void PulseAudioEngine::handleFailure(const std::string& reason) {
    if (!isRunning_) {
        server_->log(reason);
        return;
    }
    const Seconds delay = server_->countStreamFailure();
    if (delay == Seconds(0)) {
        server_->configurationChanged(reason);
    } else {
        failureTimer_.start(server_->context(), delay,
                            [this, reason] { server_->configurationChanged(reason); });
    }
}

}  // namespace tarvik::linuxdesktop
