#pragma once

#include <pulse/pulseaudio.h>

#include <cstddef>
#include <memory>
#include <string>

#include "platform/linux/audio/Microphone.h"
#include "platform/linux/audio/PulseHandles.h"

namespace tarvik::linuxdesktop {

/// Hears from a RecordStream, on the loop's thread. It must not destroy the stream in the call.
class RecordStreamListener {
  public:
    virtual ~RecordStreamListener() = default;

    /// `frameCount` frames have been recorded: `samples` holds them interleaved, or is null for a
    /// hole in the recording. Not before uncork().
    virtual void recorded(const float* samples, std::size_t frameCount) = 0;
    /// Somebody else has suspended the microphone of a running stream, or resumed it.
    virtual void suspended(bool isSuspended) = 0;
    /// The stream could not be opened or has ended; nothing follows.
    virtual void failed(const std::string& reason) = 0;
};

/// One stream from one microphone in the microphone's own rate and channels, as 32-bit floats. It
/// is opened at once but records nothing before uncork(), and never from anything but that
/// microphone. Loop locked, or its thread, for every operation. Destruction closes it.
class RecordStream {
  public:
    /// Asks for deliveries of about `fragmentFrames` frames. `context` is ready; `listener`
    /// outlives the stream.
    RecordStream(pa_context* context, const Microphone& microphone, std::size_t fragmentFrames,
                 RecordStreamListener& listener);
    ~RecordStream();
    RecordStream(const RecordStream&) = delete;
    RecordStream& operator=(const RecordStream&) = delete;

    /// Begins to record, now or as soon as the stream is open. Never waits.
    void uncork();

    const Microphone& microphone() const { return microphone_; }
    /// False once the stream has failed.
    bool isGood() const { return !failed_; }

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
    void opened();
    void fail(const std::string& reason);
    std::string lastError() const;

    pa_context* context_;
    Microphone microphone_;
    RecordStreamListener& listener_;
    std::unique_ptr<pa_stream, Unreference> stream_;
    PulseOperation uncorking_;
    bool wantsToRecord_ = false;
    bool records_ = false;
    bool suspended_ = false;
    bool failed_ = false;
};

}  // namespace tarvik::linuxdesktop
