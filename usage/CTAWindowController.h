#pragma once

#include <memory>

#include "platform/Platform.h"
#include "usage/CTATier.h"

namespace tarvik {

/// The window that points to the product's website once the user has dictated for a while. It never
/// blocks dictation. Main thread only.
class CTAWindowController {
  public:
    /// Makes the window, hidden and empty.
    explicit CTAWindowController(platform::Platform& platform);

    /// The one controller of the current platform.
    static CTAWindowController& shared();

    /// Brings the window up with the texts of `tier`.
    void show(CTATier tier);

  private:
    void buildContent();
    std::shared_ptr<platform::View> buildButtonRow();
    void styleButton(platform::Button& button, bool primary);

    void visitTapped();
    void laterTapped();
    void neverShowTapped();

    platform::Platform& platform_;
    CTATier tier_ = CTATier::tenMinute;
    // Its controls call this object, and go with it.
    std::shared_ptr<platform::Window> window_;
};

}  // namespace tarvik
