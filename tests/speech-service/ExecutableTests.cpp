#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/speech-service/ListenClient.h"
#include "tests/speech-service/TemporaryDirectory.h"

namespace tarvik::service {

namespace {

/// The service's own executable, with its output on pipes; killed with the object if need be.
class Process {
  public:
    explicit Process(std::vector<std::string> arguments) {
        std::string executable = SPEECH_SERVICE_EXECUTABLE;
        std::vector<char*> pointers{executable.data()};
        for (std::string& argument : arguments) {
            pointers.push_back(argument.data());
        }
        pointers.push_back(nullptr);
        std::array<int, 2> output{};
        std::array<int, 2> errors{};
        if (pipe(output.data()) != 0 || pipe(errors.data()) != 0) {
            throw std::runtime_error("no pipe");
        }
        process_ = fork();
        if (process_ == 0) {
            dup2(output[1], STDOUT_FILENO);
            dup2(errors[1], STDERR_FILENO);
            for (const int file : {output[0], output[1], errors[0], errors[1]}) {
                ::close(file);
            }
            execv(pointers[0], pointers.data());
            _exit(127);
        }
        ::close(output[1]);
        ::close(errors[1]);
        output_ = output[0];
        errors_ = errors[0];
    }
    ~Process() {
        if (process_ > 0) {
            kill(process_, SIGKILL);
            wait();
        }
        ::close(output_);
        ::close(errors_);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void signal(int number) const { kill(process_, number); }

    /// The next line of its standard output, without the line break.
    std::string line() const { return readLine(output_); }
    std::string errorLine() const { return readLine(errors_); }

    /// Waits for its end and returns its status; -1 if a signal killed it.
    int wait() {
        int status = 0;
        waitpid(process_, &status, 0);
        process_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    static std::string readLine(int file) {
        std::string line;
        for (char character = 0; read(file, &character, 1) == 1 && character != '\n';) {
            line += character;
        }
        return line;
    }

    pid_t process_ = -1;
    int output_ = -1;
    int errors_ = -1;
};

class Executable : public testing::Test {
  protected:
    std::vector<std::string> arguments() const {
        return {"--port=0", "--state-directory=" + directory_.path().string()};
    }

    std::filesystem::path authority() const { return directory_.path() / "ca.pem"; }

    /// Waits for the line that says where it listens; 0 when it says something else.
    static std::uint16_t portOf(const Process& service) {
        const std::string line = service.line();
        const std::string before = "listening on wss://localhost:";
        const std::string after = "/v1/listen";
        EXPECT_TRUE(line.starts_with(before) && line.ends_with(after)) << line;
        return line.size() <= before.size()
                   ? std::uint16_t{0}
                   : static_cast<std::uint16_t>(std::stoi(line.substr(before.size())));
    }

    TemporaryDirectory directory_;
};

TEST_F(Executable, EndsCleanlyOnSigtermWithAStreamOpen) {
    for (const int number : {SIGTERM, SIGINT}) {
        Process service(arguments());
        ListenClient client(portOf(service), authority());
        ASSERT_TRUE(client.openAt(16000));
        client.sendAudio(speech("hello world", 16000, 0.3, 0));
        service.signal(number);
        client.receiveAll();
        EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::going_away);
        EXPECT_EQ(service.wait(), 0);
    }
}

TEST_F(Executable, UsesItsAuthorityAgainAfterARestart) {
    std::string made;
    for (int start = 0; start < 2; ++start) {
        Process service(arguments());
        ListenClient client(portOf(service), authority());
        EXPECT_TRUE(client.openAt(16000));
        if (start == 0) {
            made = contentOf(authority());
        }
        service.signal(SIGTERM);
        client.receiveAll();
        EXPECT_EQ(service.wait(), 0);
    }
    EXPECT_EQ(contentOf(authority()), made);
}

TEST_F(Executable, PrintsWhereItsAuthorityIs) {
    std::vector<std::string> withQuestion = arguments();
    withQuestion.push_back("--print-ca");
    Process service(withQuestion);
    EXPECT_EQ(service.line(), authority().string());
    EXPECT_EQ(service.wait(), 0);
    EXPECT_FALSE(contentOf(authority()).empty());
}

TEST_F(Executable, RefusesOptionsThatItDoesNotKnow) {
    Process service({"--frobnicate"});
    EXPECT_EQ(service.errorLine(), "tarvik-speech-service: There is no option \"--frobnicate\"");
    EXPECT_EQ(service.wait(), 2);
}

TEST_F(Executable, ExplainsItself) {
    Process service({"--help"});
    EXPECT_TRUE(service.line().starts_with("usage: tarvik-speech-service"));
    EXPECT_EQ(service.wait(), 0);
}

TEST_F(Executable, SaysThatItsPortIsTaken) {
    Process first(arguments());
    const std::string port = std::to_string(portOf(first));
    Process second({"--port=" + port, "--state-directory=" + directory_.path().string()});
    EXPECT_EQ(second.errorLine(), "tarvik-speech-service: The port " + port +
                                      " cannot be listened on: Address already in use");
    EXPECT_EQ(second.wait(), 1);
}

}  // namespace

}  // namespace tarvik::service
