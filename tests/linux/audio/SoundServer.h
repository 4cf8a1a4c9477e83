#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tarvik::tests {

/// A PulseAudio of the test's own, with a runtime folder and a home of its own, for which it also
/// sets this process's environment. It has a silent loudspeaker, "auto_null", and what it is told
/// to load.
class SoundServer {
  public:
    SoundServer();
    /// Ends the server and removes the folder.
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    /// Starts the server with `modules` besides its own, and waits until it answers.
    void start(const std::vector<std::string>& modules = {});
    /// Kills the server, so that it cleans nothing up.
    void kill();
    /// Stops the server where it stands, so that it answers nothing, or lets it go on.
    void freeze(bool isFrozen) const;

    /// Runs `pactl` and returns what it printed; fails the test when it failed.
    std::string control(const std::vector<std::string>& arguments) const;
    /// Makes the server end a stream that records.
    void killStream(const std::string& index) const;
    const std::filesystem::path& folder() const { return folder_; }

  private:
    std::string commandSocket() const;

    std::filesystem::path folder_;
    pid_t process_ = -1;
};

/// Starts a program found in PATH with its standard output going to `output` and returns its
/// number.
pid_t startProgram(const std::vector<std::string>& command, int output);
/// Waits for a program's end; its exit status, or −1 when it did not exit by itself.
int waitForProgram(pid_t process);

}  // namespace tarvik::tests
