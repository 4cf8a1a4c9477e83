// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include "tests/linux/input/SessionFixture.h"
#include "tests/linux/kwin/KWinUser.h"

namespace tarvik::tests {

/// The input of a KWin session.
class KWinFixture : public SessionFixture<KWinUser>, public testing::Test {
  protected:
    // KWin 5 is busy for a while after each program that comes.
    KWinFixture() { KWinUser::ownerOf(hold); }
};

}  // namespace tarvik::tests
