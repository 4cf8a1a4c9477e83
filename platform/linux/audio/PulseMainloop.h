#pragma once

#include <pulse/pulseaudio.h>

#include <memory>

namespace tarvik::linuxdesktop {

/// The thread on which libpulse calls back, and the lock that guards everything it touches.
///
/// The thread holds the lock while it calls back and gives it up while it waits, so whoever holds a
/// Lock knows that no callback is running.
class PulseMainloop {
  public:
    /// Creates the loop; nothing runs before start().
    PulseMainloop();
    /// Stops the thread. Not on the loop's thread, and without a Lock.
    ~PulseMainloop();
    PulseMainloop(const PulseMainloop&) = delete;
    PulseMainloop& operator=(const PulseMainloop&) = delete;

    /// Starts the thread; false when the system refuses one.
    bool start();
    /// Ends the thread once the running callback has returned. Without a Lock; harmless when
    /// repeated.
    void stop();

    pa_mainloop_api* api() const;

    /// Keeps the loop's thread out while it lives. Never on the loop's thread, which is inside
    /// already.
    class Lock {
      public:
        explicit Lock(PulseMainloop& mainloop);
        ~Lock();
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;

      private:
        PulseMainloop& mainloop_;
    };

  private:
    struct Deleter {
        void operator()(pa_threaded_mainloop* loop) const { pa_threaded_mainloop_free(loop); }
    };

    std::unique_ptr<pa_threaded_mainloop, Deleter> loop_;
};

}  // namespace tarvik::linuxdesktop
