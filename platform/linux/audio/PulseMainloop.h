// SPDX-License-Identifier: MIT
#pragma once

#include <pulse/pulseaudio.h>

#include <memory>

namespace tarvik::linuxdesktop {

/// The thread on which libpulse calls back, and the lock that guards the state of all callbacks.
///
/// The thread holds the lock during every callback and releases the lock while it waits. So no
/// callback runs while another thread holds a Lock.
class PulseMainloop {
  public:
    /// Creates the loop. No callback runs before start().
    PulseMainloop();
    /// Stops the thread, as stop() does.
    ~PulseMainloop();
    PulseMainloop(const PulseMainloop&) = delete;
    PulseMainloop& operator=(const PulseMainloop&) = delete;

    /// Starts the thread; false when the system refuses one.
    bool start();
    /// Waits for a running callback and ends the thread. Not on the loop's thread and not while a
    /// Lock is held. Harmless when repeated.
    void stop();

    pa_mainloop_api* api() const;

    /// Holds the lock while it lives; waits only for a running callback. Not on the loop's thread,
    /// which holds the lock in every callback.
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
