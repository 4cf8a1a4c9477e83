#include "platform/linux/audio/RecordStream.h"

#include <utility>

namespace tarvik::linuxdesktop {

RecordStream::RecordStream(pa_context* context, const Microphone& microphone,
                           std::size_t fragmentFrames, RecordStreamListener& listener)
    : context_(context), microphone_(microphone), listener_(listener) {
    const pa_sample_spec format{PA_SAMPLE_FLOAT32NE, microphone_.sampleRate,
                                microphone_.channels.channels};
    stream_.reset(pa_stream_new(context, "Dictation", &format, &microphone_.channels));
    if (stream_) {
        connect(fragmentFrames);
    } else {
        failed_ = true;
    }
}

RecordStream::~RecordStream() {
    if (!stream_) {
        return;
    }
    pa_stream_set_read_callback(stream_.get(), nullptr, nullptr);
    pa_stream_set_moved_callback(stream_.get(), nullptr, nullptr);
    pa_stream_set_suspended_callback(stream_.get(), nullptr, nullptr);
    // A stream that the server is still opening cannot be closed yet; the connection keeps it alive
    // until the server has answered.
    const bool opening = pa_stream_get_state(stream_.get()) == PA_STREAM_CREATING;
    pa_stream_set_state_callback(stream_.get(), opening ? &RecordStream::closeOnceOpen : nullptr,
                                 nullptr);
    if (!opening) {
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
    // A stream whose microphone goes away would be moved to what remains, and that is the
    // loudspeakers' monitor: it must end instead.
    constexpr auto flags = static_cast<pa_stream_flags_t>(
        PA_STREAM_START_CORKED | PA_STREAM_ADJUST_LATENCY | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_record(stream_.get(), microphone_.name.c_str(), &attributes, flags) < 0) {
        failed_ = true;
    }
}

void RecordStream::uncork() {
    wantsToRecord_ = true;
    if (pa_stream_get_state(stream_.get()) == PA_STREAM_READY && !uncorking_) {
        uncorking_.reset(pa_stream_cork(stream_.get(), 0, &RecordStream::uncorked, this));
    }
}

void RecordStream::uncorked(pa_stream* stream, int success, void* self) {
    auto& recording = *static_cast<RecordStream*>(self);
    if (success == 0) {
        recording.fail("microphone not started: " + recording.lastError());
        return;
    }
    // Opening wakes a microphone that slept for want of listeners before the server confirms it;
    // one that is still suspended now was suspended by somebody.
    recording.records_ = true;
    recording.suspended_ = pa_stream_is_suspended(stream) == 1;
}

void RecordStream::suspendedChanged(pa_stream* stream, void* self) {
    auto& recording = *static_cast<RecordStream*>(self);
    const bool isSuspended = pa_stream_is_suspended(stream) == 1;
    if (recording.records_ && std::exchange(recording.suspended_, isSuspended) != isSuspended) {
        recording.listener_.suspended(isSuspended);
    }
}

void RecordStream::stateChanged(pa_stream* stream, void* self) {
    auto& recording = *static_cast<RecordStream*>(self);
    switch (pa_stream_get_state(stream)) {
        case PA_STREAM_READY:
            recording.opened();
            break;
        case PA_STREAM_FAILED:
        case PA_STREAM_TERMINATED:
            recording.fail("microphone closed: " + recording.lastError());
            break;
        default:
            break;
    }
}

void RecordStream::opened() {
    if (pa_stream_get_device_index(stream_.get()) != microphone_.index) {
        fail("the server opened another source than " + microphone_.name);
    } else if (wantsToRecord_) {
        uncork();
    }
}

void RecordStream::moved(pa_stream*, void* self) {
    // What the server does in spite of the flag counts for nothing: not one frame of another
    // source.
    static_cast<RecordStream*>(self)->fail("the server moved the stream to another source");
}

void RecordStream::readable(pa_stream* stream, std::size_t, void* self) {
    auto& recording = *static_cast<RecordStream*>(self);
    const std::size_t frameSize = pa_frame_size(pa_stream_get_sample_spec(stream));
    const void* data = nullptr;
    std::size_t byteCount = 0;
    while (pa_stream_readable_size(stream) > 0 && pa_stream_peek(stream, &data, &byteCount) == 0 &&
           byteCount > 0) {
        if (recording.wantsToRecord_ && !recording.failed_) {
            recording.listener_.recorded(static_cast<const float*>(data), byteCount / frameSize);
        }
        pa_stream_drop(stream);
    }
}

void RecordStream::fail(const std::string& reason) {
    if (std::exchange(failed_, true)) {
        return;
    }
    if (pa_stream_get_state(stream_.get()) == PA_STREAM_READY) {
        pa_stream_disconnect(stream_.get());
    }
    listener_.failed(reason);
}

std::string RecordStream::lastError() const {
    return pa_strerror(pa_context_errno(context_));
}

}  // namespace tarvik::linuxdesktop
