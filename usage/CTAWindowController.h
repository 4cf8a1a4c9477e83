// SPDX-License-Identifier: MIT
#pragma once

#include <memory>

#include "platform/Platform.h"
#include "usage/CTATier.h"

namespace tarvik {

/// The window that points to the product website after the user has dictated for a while. The
/// window never blocks dictation. Main thread only.
class CTAWindowController {
  public:
    /// Makes a hidden, empty window.
    explicit CTAWindowController(platform::Platform& platform);

    /// The controller of the current platform.
    static CTAWindowController& shared();

    /// Shows the window with the texts of `tier`.
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
    // Declared last, so that the controls end before the members that their actions use.
    std::shared_ptr<platform::Window> window_;
};

}  // namespace tarvik
