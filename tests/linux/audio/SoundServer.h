// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A PulseAudio server of the test's own, with a runtime folder and a home of its own.
///
/// The constructor points this process's environment at that folder. Besides the modules that
/// start() names, the server has a silent sink, "auto_null".
class SoundServer {
  public:
    SoundServer();

    /// Starts the server with `modules` besides its own, and waits until the server answers.
    void start(const std::vector<std::string>& modules = {});
    /// Kills the server without a chance to clean up.
    void kill() { process_.reset(); }
    /// Stops the server's process, so that the server answers nothing, or resumes it.
    void freeze(bool isFrozen) const;

    /// Runs `pactl` and returns its output; fails the test when `pactl` fails.
    std::string control(const std::vector<std::string>& arguments) const;
    /// Makes the server end a recording stream.
    void killStream(const std::string& index) const;
    const std::filesystem::path& folder() const { return folder_.path(); }

  private:
    std::string commandSocket() const;

    TemporaryFolder folder_;
    std::optional<TestProcess> process_;
};

/// Runs a program of the sound server to its end, without its error output.
TestProcess::Result runQuietly(const std::vector<std::string>& command);

}  // namespace tarvik::tests
