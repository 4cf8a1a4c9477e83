// SPDX-License-Identifier: MIT

#include "platform/linux/audio/RecordStream.h"

#include <algorithm>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// In microseconds. What the server has kept for a stream arrives within this time of the start.
constexpr pa_usec_t settleTime = 10'000;

}  // namespace

RecordStream::RecordStream(pa_context* context, Microphone microphone, std::size_t fragmentFrames,
                           Events events)
    : context_(context), microphone_(std::move(microphone)), events_(std::move(events)) {
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, microphone_.sampleRate,
                                microphone_.channels.channels};
    stream_.reset(pa_stream_new(context, "Dictation", &format, &microphone_.channels));
    if (stream_) {
        connect(fragmentFrames);
    } else {
        hasFailed_ = true;
    }
}

RecordStream::~RecordStream() {
    if (!stream_) {
        return;
    }
    pa_stream_set_read_callback(stream_.get(), nullptr, nullptr);
    pa_stream_set_moved_callback(stream_.get(), nullptr, nullptr);
    pa_stream_set_suspended_callback(stream_.get(), nullptr, nullptr);
    // libpulse cannot close a stream that the server is still opening. The context keeps such a
    // stream alive until the server has answered.
    const bool isOpening = pa_stream_get_state(stream_.get()) == PA_STREAM_CREATING;
    pa_stream_set_state_callback(stream_.get(), isOpening ? &RecordStream::closeOnceOpen : nullptr,
                                 nullptr);
    if (!isOpening) {
        pa_stream_disconnect(stream_.get());
    }
}

void RecordStream::closeOnceOpen(pa_stream* stream, void*) {
    if (pa_stream_get_state(stream) == PA_STREAM_READY) {
        pa_stream_disconnect(stream);
    }
}

void RecordStream::connect(std::size_t fragmentFrames) {
    pa_stream_set_state_callback(stream_.get(), &RecordStream::stateChanged, this);
    pa_stream_set_read_callback(stream_.get(), &RecordStream::readable, this);
    pa_stream_set_moved_callback(stream_.get(), &RecordStream::moved, this);
    pa_stream_set_suspended_callback(stream_.get(), &RecordStream::suspendedChanged, this);
    pa_buffer_attr attributes{};
    attributes.maxlength = static_cast<std::uint32_t>(-1);
    attributes.fragsize = static_cast<std::uint32_t>(
        fragmentFrames * pa_frame_size(pa_stream_get_sample_spec(stream_.get())));
    // Without DONT_MOVE, the server would move a stream whose microphone goes away to a remaining
    // source: the loudspeakers' monitor.
    constexpr auto flags = static_cast<pa_stream_flags_t>(
        PA_STREAM_START_CORKED | PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(stream_.get(), microphone_.name.c_str(), &attributes, flags) < 0) {
        hasFailed_ = true;
    }
}

void RecordStream::uncork() {
    if (!uncorkTime_) {
        uncorkTime_ = pa_rtclock_now();
    }
    if (pa_stream_get_state(stream_.get()) == PA_STREAM_READY && !uncorkOperation_) {
        uncorkOperation_.reset(pa_stream_cork(stream_.get(), 0, &RecordStream::uncorked, this));
    }
}

void RecordStream::uncorked(pa_stream* stream, int success, void* self) {
    auto& recording = *static_cast<RecordStream*>(self);
    if (success == 0) {
        recording.fail("microphone not started: " + recording.lastError());
        return;
    }
    // The server resumes an idle microphone before it confirms the uncorking. A microphone that is
    // still suspended now was suspended by another program.
    recording.isUncorked_ = true;
    recording.isSuspended_ = pa_stream_is_suspended(stream) == 1;
}

void RecordStream::suspendedChanged(pa_stream* stream, void* self) {
    auto& recording = *static_cast<RecordStream*>(self);
    const bool isSuspended = pa_stream_is_suspended(stream) == 1;
    if (recording.isUncorked_ &&
        std::exchange(recording.isSuspended_, isSuspended) != isSuspended) {
        recording.events_.onSuspended(isSuspended);
    }
}

void RecordStream::stateChanged(pa_stream* stream, void* self) {
    auto& recording = *static_cast<RecordStream*>(self);
    switch (pa_stream_get_state(stream)) {
        case PA_STREAM_READY:
            recording.handleOpened();
            break;
        case PA_STREAM_FAILED:
        case PA_STREAM_TERMINATED:
            recording.fail("microphone closed: " + recording.lastError());
            break;
        default:
            break;
    }
}

void RecordStream::handleOpened() {
    if (pa_stream_get_device_index(stream_.get()) != microphone_.index) {
        fail("the server opened another source than " + microphone_.name);
    } else if (uncorkTime_) {
        uncork();
    }
}

void RecordStream::moved(pa_stream*, void* self) {
    // In spite of DONT_MOVE. Not one frame of another source may be recorded.
    static_cast<RecordStream*>(self)->fail("the server moved the stream to another source");
}

void RecordStream::readable(pa_stream* stream, std::size_t, void* self) {
    auto& recording = *static_cast<RecordStream*>(self);
    if (recording.uncorkTime_ && !recording.findStart()) {
        return;
    }
    const void* data = nullptr;
    std::size_t byteCount = 0;
    while (pa_stream_readable_size(stream) > 0 && pa_stream_peek(stream, &data, &byteCount) == 0 &&
           byteCount > 0) {
        if (recording.uncorkTime_ && !recording.hasFailed_) {
            recording.deliver(static_cast<const float*>(data), byteCount);
        }
        pa_stream_drop(stream);
    }
}

// The hardware records before a stream is uncorked, so the first fragments may be older. No frame
// is younger than now. More frames than the time since the start has room for are therefore older.
bool RecordStream::findStart() {
    const pa_usec_t elapsed = pa_rtclock_now() - *uncorkTime_;
    if (!isStartFound_ && elapsed >= settleTime) {
        isStartFound_ = true;
        const std::size_t byteCount = pa_stream_readable_size(stream_.get());
        const std::size_t maxByteCount =
            pa_usec_to_bytes(elapsed, pa_stream_get_sample_spec(stream_.get()));
        oldByteCount_ = byteCount - std::min(byteCount, maxByteCount);
    }
    return isStartFound_;
}

void RecordStream::deliver(const float* samples, std::size_t byteCount) {
    const std::size_t left = std::min(byteCount, oldByteCount_);
    oldByteCount_ -= left;
    if (left < byteCount) {
        const std::size_t frameSize = pa_frame_size(pa_stream_get_sample_spec(stream_.get()));
        events_.onFrames(samples != nullptr ? samples + left / sizeof(float) : nullptr,
                         (byteCount - left) / frameSize);
    }
}

void RecordStream::fail(const std::string& reason) {
    if (std::exchange(hasFailed_, true)) {
        return;
    }
    if (pa_stream_get_state(stream_.get()) == PA_STREAM_READY) {
        pa_stream_disconnect(stream_.get());
    }
    events_.onFailure(reason);
}

std::string RecordStream::lastError() const {
    return pa_strerror(pa_context_errno(context_));
}

}  // namespace tarvik::linuxdesktop
