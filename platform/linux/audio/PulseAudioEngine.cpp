#include "platform/linux/audio/PulseAudioEngine.h"

#include <utility>

namespace tarvik::linuxdesktop {

namespace {

/// What the server is asked to deliver at once; the tap's own size is not known when a stream is
/// made ready.
constexpr std::size_t fragmentFrames = 2048;
constexpr Seconds unusedStreamLife{10};

platform::AudioFormat formatOf(const Microphone& microphone) {
    return {static_cast<double>(microphone.sampleRate), microphone.channels.channels};
}

}  // namespace

PulseAudioEngine::PulseAudioEngine(std::shared_ptr<PulseServer> server)
    : server_(std::move(server)), release_(server_->api()), rest_(server_->api()) {}

PulseAudioEngine::~PulseAudioEngine() {
    stop();
}

platform::AudioFormat PulseAudioEngine::inputFormatForBus(std::uint32_t bus) {
    const auto lock = server_->lock();
    if (bus != 0 || !server_->microphone()) {
        return {};
    }
    if (!running_) {
        prepareStream();
    }
    return formatOf(*server_->microphone());
}

void PulseAudioEngine::prepare() {
    const auto lock = server_->lock();
    if (server_->microphone() && !running_) {
        prepareStream();
    }
}

void PulseAudioEngine::prepareStream() {
    if (openStream()) {
        release_.start(server_->context(), unusedStreamLife, [this] { stream_.reset(); });
    }
}

/// Opens the default microphone's stream unless it is open; false when that is impossible.
bool PulseAudioEngine::openStream() {
    const Microphone& microphone = *server_->microphone();
    if (!stream_ || !stream_->isGood() || !(stream_->microphone() == microphone)) {
        RecordStreamListener& listener = *this;
        stream_ = std::make_unique<RecordStream>(server_->context(), microphone, fragmentFrames,
                                                 listener);
    }
    return stream_->isGood();
}

std::optional<Error> PulseAudioEngine::start() {
    const auto lock = server_->lock();
    if (running_ && stream_->isGood()) {
        return std::nullopt;
    }
    running_ = false;
    if (!server_->isReady()) {
        return Error{PA_ERR_CONNECTIONREFUSED, "no sound server answers"};
    }
    if (!server_->microphone()) {
        return Error{PA_ERR_NOENTITY, "the sound server has no microphone as its default source"};
    }
    running_ = openStream();
    if (!running_) {
        const int code = pa_context_errno(server_->context());
        stream_.reset();
        return Error{code, std::string("the microphone cannot be opened: ") + pa_strerror(code)};
    }
    release_.cancel();
    rest_.cancel();
    stream_->uncork();
    return std::nullopt;
}

void PulseAudioEngine::stop() {
    const auto lock = server_->lock();
    running_ = false;
    release_.cancel();
    rest_.cancel();
    stream_.reset();
    collector_.reset();
}

void PulseAudioEngine::installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                       const platform::AudioFormat&,
                                       platform::AudioTapBlock block) {
    if (bus != 0) {
        return;
    }
    const auto lock = server_->lock();
    // The buffers carry the format of the stream that delivers them, which is the default
    // microphone's, as the given one is.
    tap_ = Tap{bufferSize, std::move(block)};
}

void PulseAudioEngine::removeTapOnBus(std::uint32_t bus) {
    if (bus != 0) {
        return;
    }
    // Released after the lock: what the block holds is not ours.
    std::optional<Tap> removed;
    {
        const auto lock = server_->lock();
        collector_.reset();
        removed = std::exchange(tap_, std::nullopt);
    }
}

void PulseAudioEngine::recorded(const float* samples, std::size_t frameCount) {
    server_->streamDelivered();
    if (!tap_) {
        return;
    }
    if (!collector_) {
        collector_.emplace(tap_->bufferSize, formatOf(stream_->microphone()), tap_->block);
    }
    collector_->append(samples, frameCount);
}

void PulseAudioEngine::suspended(bool isSuspended) {
    server_->configurationChanged(isSuspended ? "microphone suspended" : "microphone resumed");
}

void PulseAudioEngine::failed(const std::string& reason) {
    if (!running_) {
        server_->log(reason);
        return;
    }
    const Seconds rest = server_->restAfterFailure();
    if (rest == Seconds(0)) {
        server_->configurationChanged(reason);
    } else {
        rest_.start(server_->context(), rest,
                    [this, reason] { server_->configurationChanged(reason); });
    }
}

}  // namespace tarvik::linuxdesktop
