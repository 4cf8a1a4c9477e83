#include "tests/linux/audio/PipeMicrophone.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace tarvik::tests {

namespace {

constexpr auto piece = std::chrono::milliseconds(10);

}  // namespace

PipeMicrophone::PipeMicrophone(const std::filesystem::path& pipe, std::uint32_t sampleRate,
                               std::uint32_t channelCount)
    : pipe_(open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)),
      pieceSamples_(sampleRate / 100 * channelCount) {
    EXPECT_GE(pipe_, 0) << pipe;
    signal(SIGPIPE, SIG_IGN);
    thread_ = std::thread([this] { run(); });
}

PipeMicrophone::~PipeMicrophone() {
    ended_ = true;
    thread_.join();
    close(pipe_);
}

void PipeMicrophone::speak(const std::vector<std::int16_t>& samples) {
    const std::lock_guard lock(mutex_);
    toSay_.insert(toSay_.end(), samples.begin(), samples.end());
}

std::vector<std::int16_t> PipeMicrophone::nextPiece() {
    std::vector<std::int16_t> samples(pieceSamples_);
    const std::lock_guard lock(mutex_);
    const auto count = static_cast<std::ptrdiff_t>(std::min(pieceSamples_, toSay_.size()));
    std::copy_n(toSay_.begin(), count, samples.begin());
    toSay_.erase(toSay_.begin(), toSay_.begin() + count);
    return samples;
}

void PipeMicrophone::run() {
    auto due = std::chrono::steady_clock::now();
    while (!ended_) {
        const std::vector<std::int16_t> samples = nextPiece();
        // A pipe that nobody empties is full: what a microphone hears while it is off is lost, too.
        // One piece is shorter than PIPE_BUF, so it goes in whole or not at all.
        [[maybe_unused]] const ssize_t written =
            write(pipe_, samples.data(), samples.size() * sizeof(std::int16_t));
        due += piece;
        std::this_thread::sleep_until(due);
    }
}

}  // namespace tarvik::tests
