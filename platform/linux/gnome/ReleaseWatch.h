// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/ibus/FieldEngine.h"
#include "platform/linux/loop/EventLoop.h"

namespace tarvik::linuxdesktop {

/// The keys of the user after a hold. The engine stays in use for a second, so that a late report
/// of that hold can be told from the next press: nobody presses the hotkey again without Alt. Loop
/// thread only; no operation waits.
class ReleaseWatch {
  public:
    /// The references outlive the object.
    ReleaseWatch(FieldEngine& engine, EventLoop& loop) : engine_(engine), deadline_(loop) {}
    ReleaseWatch(const ReleaseWatch&) = delete;
    ReleaseWatch& operator=(const ReleaseWatch&) = delete;

    /// The hold has ended with a key.
    void begin(const FieldEngine::Key& key);
    /// A late report has come. The watch, if there is one, lasts for another second.
    void extend();
    /// The engine is no longer in use for its keys. Called before the destructor.
    void end();

    /// The engine has seen a key.
    void noteKey(const FieldEngine::Key& key);
    /// The engine has no field, and sees no keys.
    void noteUnseen();

    /// Whether Alt has gone up at the end of the hold or since, and no key has gone down: a report
    /// of the hotkey that comes now is no press.
    bool isAltUp() const { return isAltUp_; }

  private:
    FieldEngine& engine_;
    bool isActive_ = false;
    bool isPressed_ = false;
    bool isAltUp_ = false;
    Deadline deadline_;
};

}  // namespace tarvik::linuxdesktop
