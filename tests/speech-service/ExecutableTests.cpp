// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <signal.h>

#include <fstream>
#include <vector>

#include "tests/speech-service/ListenClient.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::service {

namespace {

using tests::TestProcess;

class Executable : public testing::Test {
  protected:
    std::vector<std::string> command(const std::string& port = "0") const {
        return {SPEECH_SERVICE_EXECUTABLE, "--port=" + port,
                "--state-directory=" + folder_.path().string()};
    }

    std::filesystem::path authority() const { return folder_ / "ca.pem"; }

    /// The port in the first line of the output; 0 when the line has another form.
    static std::uint16_t portOf(TestProcess& service) {
        const std::string line = service.readLine().value_or("");
        const std::string before = "listening on wss://localhost:";
        const std::string after = "/v1/listen";
        EXPECT_TRUE(line.starts_with(before) && line.ends_with(after)) << line;
        return line.size() <= before.size()
                   ? std::uint16_t{0}
                   : static_cast<std::uint16_t>(std::stoi(line.substr(before.size())));
    }

    /// Runs the service to its end; the result has its standard error.
    static TestProcess::Result runForErrors(const std::vector<std::string>& command) {
        return TestProcess::run(command, {.errorOutput = TestProcess::ErrorOutput::read});
    }

    tests::TemporaryFolder folder_;
};

TEST_F(Executable, EndsCleanlyOnSigtermWithAStreamOpen) {
    for (const int number : {SIGTERM, SIGINT}) {
        TestProcess service(command());
        ListenClient client(portOf(service), authority());
        ASSERT_TRUE(client.openAt(16000));
        client.sendAudio(speech("hello world", 16000, 0.3, 0));
        service.send(number);
        client.receiveAll();
        EXPECT_EQ(client.closeReason().code, boost::beast::websocket::close_code::going_away);
        EXPECT_EQ(service.waitForEnd(), 0);
    }
}

TEST_F(Executable, UsesItsAuthorityAgainAfterARestart) {
    std::string made;
    for (int start = 0; start < 2; ++start) {
        TestProcess service(command());
        ListenClient client(portOf(service), authority());
        EXPECT_TRUE(client.openAt(16000));
        if (start == 0) {
            made = tests::contentOf(authority());
        }
        service.send(SIGTERM);
        client.receiveAll();
        EXPECT_EQ(service.waitForEnd(), 0);
    }
    EXPECT_EQ(tests::contentOf(authority()), made);
}

TEST_F(Executable, PrintsWhereItsAuthorityIs) {
    std::vector<std::string> printing = command();
    printing.push_back("--print-ca");
    const TestProcess::Result result = TestProcess::run(printing);
    EXPECT_EQ(result.output, authority().string() + "\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_FALSE(tests::contentOf(authority()).empty());
}

TEST_F(Executable, RefusesOptionsThatItDoesNotKnow) {
    const TestProcess::Result result = runForErrors({SPEECH_SERVICE_EXECUTABLE, "--frobnicate"});
    EXPECT_EQ(result.output, "tarvik-speech-service: There is no option \"--frobnicate\"\n");
    EXPECT_EQ(result.status, 2);
}

TEST_F(Executable, ExplainsItself) {
    const TestProcess::Result result = TestProcess::run({SPEECH_SERVICE_EXECUTABLE, "--help"});
    EXPECT_TRUE(result.output.starts_with("usage: tarvik-speech-service"));
    EXPECT_EQ(result.status, 0);
}

TEST_F(Executable, EndsAtItsStartWithoutAModel) {
    std::vector<std::string> withoutModel = command();
    withoutModel.push_back("--model=" + (folder_ / "none").string());
    const TestProcess::Result result = runForErrors(withoutModel);
    EXPECT_EQ(result.output, "tarvik-speech-service: There is no speech model in " +
                                 (folder_ / "none").string() + ": en-us/mdef is missing\n");
    EXPECT_EQ(result.status, 1);
}

TEST_F(Executable, EndsAtItsStartWithAModelThatIsNone) {
    std::filesystem::create_directories(folder_ / "model/en-us");
    for (const char* name : {"en-us/mdef", "en-us.lm.bin", "cmudict-en-us.dict"}) {
        std::ofstream(folder_ / "model" / name) << "no model";
    }
    std::vector<std::string> withoutModel = command();
    withoutModel.push_back("--model=" + (folder_ / "model").string());
    const TestProcess::Result result = TestProcess::run(withoutModel);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.status, 0);
}

TEST_F(Executable, SaysWhereItsMetricsAre) {
    std::vector<std::string> measured = command();
    measured.push_back("--metrics-port=0");
    TestProcess service(measured);
    portOf(service);
    const std::string line = service.readLine().value_or("");
    EXPECT_TRUE(line.starts_with("metrics on http://127.0.0.1:") && line.ends_with("/metrics"))
        << line;
    service.send(SIGTERM);
    EXPECT_EQ(service.waitForEnd(), 0);
}

TEST_F(Executable, SaysThatItsPortIsTaken) {
    TestProcess first(command());
    const std::string port = std::to_string(portOf(first));
    const TestProcess::Result second = runForErrors(command(port));
    EXPECT_EQ(second.output, "tarvik-speech-service: The port " + port +
                                 " cannot be listened on: Address already in use\n");
    EXPECT_EQ(second.status, 1);
}

// Opens a listening socket, prints its port, and becomes the service as a service manager starts
// one.
constexpr const char* handOver =
    "import os, socket, sys\n"
    "listener = socket.create_server(('127.0.0.1', 0))\n"
    "print(listener.getsockname()[1], flush=True)\n"
    "os.dup2(listener.fileno() if sys.argv[1] == 'listener' else 1, 3)\n"
    "os.set_inheritable(3, True)\n"
    "os.environ['LISTEN_PID'] = str(os.getpid() + (sys.argv[2] == 'other'))\n"
    "os.environ['LISTEN_FDS'] = '1'\n"
    "os.execv(sys.argv[3], sys.argv[3:])\n";

class HandedSocket : public Executable {
  protected:
    std::vector<std::string> handing(const std::string& what, const std::string& toWhom) const {
        std::vector<std::string> all = {"/usr/bin/python3", "-c", handOver, what, toWhom};
        const std::vector<std::string> service = command();
        all.insert(all.end(), service.begin(), service.end());
        return all;
    }
};

TEST_F(HandedSocket, IsServed) {
    TestProcess service(handing("listener", "self"));
    const int handed = std::stoi(service.readLine().value_or("0"));
    EXPECT_EQ(portOf(service), handed);
    ListenClient client(static_cast<std::uint16_t>(handed), authority());
    EXPECT_TRUE(client.openAt(16000));
    service.send(SIGTERM);
    client.receiveAll();
    EXPECT_EQ(service.waitForEnd(), 0);
}

TEST_F(HandedSocket, IsLeftAloneWhenItIsForAnotherProcess) {
    TestProcess service(handing("listener", "other"));
    const int handed = std::stoi(service.readLine().value_or("0"));
    EXPECT_NE(portOf(service), handed);
    service.send(SIGTERM);
    EXPECT_EQ(service.waitForEnd(), 0);
}

TEST_F(HandedSocket, IsRefusedWhenItIsNone) {
    const TestProcess::Result result = runForErrors(handing("file", "self"));
    EXPECT_EQ(result.output,
              "tarvik-speech-service: The descriptor 3 was handed over and is no listening TCP "
              "socket\n");
    EXPECT_EQ(result.status, 1);
}

}  // namespace

}  // namespace tarvik::service
