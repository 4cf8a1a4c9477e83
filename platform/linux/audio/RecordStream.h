// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/pulseaudio.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/audio/Microphone.h"
#include "platform/linux/audio/PulseHandles.h"

namespace tarvik::linuxdesktop {

/// One recording stream from one microphone, in that microphone's rate and channels, as 32-bit
/// floats.
///
/// The constructor opens the stream corked; nothing is recorded before uncork(). The stream never
/// records from another source: it fails when its microphone goes away. Every operation needs the
/// loop's lock. Destruction closes the stream.
class RecordStream {
  public:
    /// Called on the loop's thread. None of them may destroy the stream.
    struct Events {
        /// `frameCount` frames have been recorded: `samples` holds them interleaved, or is null for
        /// a hole in the recording. Frames that are certainly older than uncork() are left out.
        std::function<void(const float* samples, std::size_t frameCount)> onFrames;
        /// The microphone of an uncorked stream has been suspended or resumed by another program.
        std::function<void(bool isSuspended)> onSuspended;
        /// The stream could not be opened or has ended. No event follows. After a failure inside
        /// the constructor, isGood() is false instead.
        std::function<void(const std::string& reason)> onFailure;
    };

    /// Asks the server for fragments of about `fragmentFrames` frames. `context` is ready; when the
    /// context ends before the stream, the stream fails.
    RecordStream(pa_context* context, Microphone microphone, std::size_t fragmentFrames,
                 Events events);
    ~RecordStream();
    RecordStream(const RecordStream&) = delete;
    RecordStream& operator=(const RecordStream&) = delete;

    /// Starts to record, now or as soon as the stream is open. Never waits.
    void uncork();

    const Microphone& microphone() const { return microphone_; }
    /// False once the stream has failed.
    bool isGood() const { return !hasFailed_; }

  private:
    struct Unreference {
        void operator()(pa_stream* stream) const { pa_stream_unref(stream); }
    };

    static void stateChanged(pa_stream* stream, void* self);
    static void readable(pa_stream* stream, std::size_t byteCount, void* self);
    static void moved(pa_stream* stream, void* self);
    static void suspendedChanged(pa_stream* stream, void* self);
    static void uncorked(pa_stream* stream, int success, void* self);
    static void closeOnceOpen(pa_stream* stream, void*);
    void connect(std::size_t fragmentFrames);
    bool findStart();
    void deliver(const float* samples, std::size_t byteCount);
    void handleOpened();
    void fail(const std::string& reason);
    std::string lastError() const;

    pa_context* context_;
    Microphone microphone_;
    Events events_;
    std::unique_ptr<pa_stream, Unreference> stream_;
    PulseOperation uncorkOperation_;
    /// The time of the first uncork(), on the clock of libpulse.
    std::optional<pa_usec_t> uncorkTime_;
    bool isStartFound_ = false;
    /// The bytes from before the start that are still to be left out.
    std::size_t oldByteCount_ = 0;
    bool isUncorked_ = false;
    bool isSuspended_ = false;
    bool hasFailed_ = false;
};

}  // namespace tarvik::linuxdesktop
