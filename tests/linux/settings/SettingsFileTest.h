// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "platform/linux/settings/FileUserDefaults.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace tarvik::tests {

/// The settings in a file of their own.
class SettingsFileTest : public testing::Test {
  protected:
    void open() { defaults.emplace(path, log); }
    /// Waits until everything is saved.
    void close() { defaults.reset(); }

    template <typename Condition>
    bool eventually(Condition condition) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::yield();
        }
        return true;
    }

    TemporaryFolder folder;
    const std::string path = folder / "config/Tarvik/Tarvik Dictate.conf";
    RecordingLog log;
    std::optional<linuxdesktop::FileUserDefaults> defaults;
};

}  // namespace tarvik::tests
