// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include "tests/linux/windows/UserInterfaceTest.h"
#include "tests/linux/windows/X11Client.h"

namespace tarvik::tests {

/// A test of windows on a display with a window manager, and another program there.
///
/// The X server gives the numbers of an ended program's windows to the next program. A late window
/// manager would take the windows of this test for those of the test before, so the test begins
/// when the window manager has let go of those.
class ManagedWindowTest : public UserInterfaceTest {
  protected:
    ManagedWindowTest() {
        EXPECT_TRUE(runUntil([this] { return program.managedWindows().empty(); }));
        const xcb_window_t fence = program.askForFrame();
        EXPECT_TRUE(
            runUntil([&] { return !program.property(fence, "_NET_FRAME_EXTENTS").empty(); }));
    }

    X11Client program;
};

}  // namespace tarvik::tests
