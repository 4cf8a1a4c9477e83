// SPDX-License-Identifier: MIT

#include "tests/linux/audio/SoundServer.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace tarvik::tests {

namespace {

const TestProcess::Options withoutErrorOutput{.errorOutput = TestProcess::ErrorOutput::dropped};

}  // namespace

TestProcess::Result runQuietly(const std::vector<std::string>& command) {
    return TestProcess::run(command, withoutErrorOutput);
}

SoundServer::SoundServer() {
    setenv("XDG_RUNTIME_DIR", folder().c_str(), 1);
    setenv("HOME", folder().c_str(), 1);
    for (const char* name : {"PULSE_SERVER", "PULSE_RUNTIME_PATH", "XDG_CONFIG_HOME",
                             "XDG_STATE_HOME", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS"}) {
        unsetenv(name);
    }
}

void SoundServer::start(const std::vector<std::string>& modules) {
    // The server must not survive a test that is killed.
    std::vector<std::string> command{"setpriv",
                                     "--pdeathsig",
                                     "KILL",
                                     "pulseaudio",
                                     "-n",
                                     "--daemonize=no",
                                     "--exit-idle-time=-1",
                                     "--use-pid-file=no",
                                     "-L",
                                     "module-native-protocol-unix",
                                     "-L",
                                     "module-always-sink",
                                     "-L",
                                     "module-suspend-on-idle timeout=1",
                                     "-L",
                                     "module-cli-protocol-unix socket=" + commandSocket()};
    for (const std::string& module : modules) {
        command.insert(command.end(), {"-L", module});
    }
    process_.emplace(command, withoutErrorOutput);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (runQuietly({"pactl", "info"}).status != 0) {
        ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the sound server does not answer";
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void SoundServer::freeze(bool isFrozen) const {
    process_->send(isFrozen ? SIGSTOP : SIGCONT);
}

std::string SoundServer::commandSocket() const {
    return (folder() / "commands").string();
}

void SoundServer::killStream(const std::string& index) const {
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    commandSocket().copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const std::string command = "kill-source-output " + index + "\n";
    EXPECT_EQ(write(connection, command.data(), command.size()),
              static_cast<ssize_t>(command.size()));
    // The server hangs up once it has carried out the command.
    shutdown(connection, SHUT_WR);
    std::array<char, 256> answer{};
    while (read(connection, answer.data(), answer.size()) > 0) {
    }
    close(connection);
}

std::string SoundServer::control(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"pactl"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const TestProcess::Result result = runQuietly(command);
    EXPECT_EQ(result.status, 0) << arguments[0];
    return result.output;
}

}  // namespace tarvik::tests
