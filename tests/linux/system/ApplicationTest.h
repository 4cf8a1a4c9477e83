// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <QTimer>
#include <array>
#include <functional>
#include <string>

#include "platform/linux/loop/MonotonicClock.h"
#include "platform/linux/system/QtApplication.h"
#include "platform/linux/system/QtMainQueue.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

/// A test inside an application. The thread of the test is the main thread.
class ApplicationTest : public testing::Test {
  protected:
    /// Runs the main loop until `condition` holds; false when that takes more than ten seconds.
    bool runUntil(const std::function<bool()>& condition) {
        const TimePoint deadline = clock.now() + Seconds(10);
        QTimer pulse;
        pulse.start(5);
        while (!condition()) {
            if (clock.now() > deadline) {
                return false;
            }
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return true;
    }

  private:
    int argumentCount_ = 1;
    std::string name_ = "application-test";
    std::array<char*, 2> argumentValues_ = {name_.data(), nullptr};

  protected:
    TemporaryFolder folder;
    RecordingLog log;
    linuxdesktop::MonotonicClock clock;
    linuxdesktop::QtApplication application{argumentCount_, argumentValues_.data(), clock};
    linuxdesktop::QtMainQueue mainQueue{clock};
};

}  // namespace tarvik::tests
