// SPDX-License-Identifier: MIT

#include "platform/linux/audio/PulseMainloop.h"

namespace tarvik::linuxdesktop {

PulseMainloop::PulseMainloop() : loop_(pa_threaded_mainloop_new()) {}

PulseMainloop::~PulseMainloop() {
    stop();
}

bool PulseMainloop::start() {
    pa_threaded_mainloop_set_name(loop_.get(), "tarvik-audio");
    return pa_threaded_mainloop_start(loop_.get()) == 0;
}

void PulseMainloop::stop() {
    pa_threaded_mainloop_stop(loop_.get());
}

pa_mainloop_api* PulseMainloop::api() const {
    return pa_threaded_mainloop_get_api(loop_.get());
}

PulseMainloop::Lock::Lock(PulseMainloop& mainloop) : mainloop_(mainloop) {
    pa_threaded_mainloop_lock(mainloop_.loop_.get());
}

PulseMainloop::Lock::~Lock() {
    pa_threaded_mainloop_unlock(mainloop_.loop_.get());
}

}  // namespace tarvik::linuxdesktop
