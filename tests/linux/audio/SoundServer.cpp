#include "tests/linux/audio/SoundServer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <thread>

namespace tarvik::tests {

pid_t startProgram(const std::vector<std::string>& command, int output) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = -1;
    const int error =
        posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(error, 0) << command[0];
    return process;
}

int waitForProgram(pid_t process) {
    int status = 0;
    const bool ended = waitpid(process, &status, 0) == process;
    return ended && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

namespace {

struct Outcome {
    int status;
    std::string output;
};

Outcome run(const std::vector<std::string>& command) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    const pid_t process = startProgram(command, ends[1]);
    close(ends[1]);
    std::string output;
    std::array<char, 4096> buffer{};
    for (ssize_t length = 0; (length = read(ends[0], buffer.data(), buffer.size())) > 0;) {
        output.append(buffer.data(), static_cast<std::size_t>(length));
    }
    close(ends[0]);
    return {waitForProgram(process), output};
}

}  // namespace

SoundServer::SoundServer() {
    std::string folder = (std::filesystem::temp_directory_path() / "tarvik-audio-XXXXXX").string();
    EXPECT_NE(mkdtemp(folder.data()), nullptr);
    folder_ = folder;
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    setenv("HOME", folder.c_str(), 1);
    for (const char* name : {"PULSE_SERVER", "PULSE_RUNTIME_PATH", "XDG_CONFIG_HOME",
                             "XDG_STATE_HOME", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS"}) {
        unsetenv(name);
    }
}

SoundServer::~SoundServer() {
    kill();
    std::filesystem::remove_all(folder_);
}

void SoundServer::start(const std::vector<std::string>& modules) {
    // A test that is killed takes its server along.
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
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    process_ = startProgram(command, nowhere);
    close(nowhere);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (run({"pactl", "info"}).status != 0) {
        ASSERT_LT(std::chrono::steady_clock::now(), end) << "the sound server does not answer";
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

void SoundServer::kill() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        waitForProgram(process_);
        process_ = -1;
    }
}

void SoundServer::freeze(bool isFrozen) const {
    ::kill(process_, isFrozen ? SIGSTOP : SIGCONT);
}

std::string SoundServer::commandSocket() const {
    return (folder_ / "commands").string();
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
    // The server hangs up once it has carried out what it was sent.
    shutdown(connection, SHUT_WR);
    std::array<char, 256> answer{};
    while (read(connection, answer.data(), answer.size()) > 0) {
    }
    close(connection);
}

std::string SoundServer::control(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{"pactl"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, 0) << arguments[0];
    return outcome.output;
}

}  // namespace tarvik::tests
