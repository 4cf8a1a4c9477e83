// SPDX-License-Identifier: MIT

#include "platform/linux/gnome/ReleaseWatch.h"

#include <chrono>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// How much later than a release GNOME may report a repeat of the hold.
constexpr std::chrono::seconds lateTime(1);

}  // namespace

void ReleaseWatch::begin(const FieldEngine::Key& key) {
    if (!std::exchange(isActive_, true)) {
        engine_.acquire();
    }
    isPressed_ = false;
    isAltUp_ = false;
    noteKey(key);
    extend();
}

void ReleaseWatch::extend() {
    if (isActive_) {
        deadline_.set(lateTime, [this] { end(); });
    }
}

void ReleaseWatch::end() {
    deadline_.clear();
    isAltUp_ = false;
    if (std::exchange(isActive_, false)) {
        engine_.release();
    }
}

void ReleaseWatch::noteKey(const FieldEngine::Key& key) {
    if (!key.isUp) {
        isPressed_ = true;
        isAltUp_ = false;
    } else if (isActive_ && !isPressed_ && (key.isAlt() || !key.hasAlt)) {
        isAltUp_ = true;
    }
}

// What the engine does not see may be a press.
void ReleaseWatch::noteUnseen() {
    isPressed_ = true;
    isAltUp_ = false;
}

}  // namespace tarvik::linuxdesktop
