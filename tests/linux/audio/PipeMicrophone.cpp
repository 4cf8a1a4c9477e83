// SPDX-License-Identifier: MIT

#include "tests/linux/audio/PipeMicrophone.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>

namespace tarvik::tests {

namespace {

constexpr auto chunkInterval = std::chrono::milliseconds(10);

}  // namespace

PipeMicrophone::PipeMicrophone(const std::filesystem::path& pipe, std::uint32_t sampleRate,
                               std::uint32_t channelCount)
    : pipe_(open(pipe.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC)),
      chunkSamples_(sampleRate / 100 * channelCount) {
    EXPECT_GE(pipe_, 0) << pipe;
    signal(SIGPIPE, SIG_IGN);
    thread_ = std::thread([this] { run(); });
}

PipeMicrophone::~PipeMicrophone() {
    isStopping_ = true;
    thread_.join();
    close(pipe_);
}

void PipeMicrophone::speak(const std::vector<std::int16_t>& samples) {
    const std::lock_guard lock(mutex_);
    pending_.insert(pending_.end(), samples.begin(), samples.end());
}

std::vector<std::int16_t> PipeMicrophone::nextChunk() {
    std::vector<std::int16_t> samples(chunkSamples_);
    const std::lock_guard lock(mutex_);
    const auto count = static_cast<std::ptrdiff_t>(std::min(chunkSamples_, pending_.size()));
    std::copy_n(pending_.begin(), count, samples.begin());
    pending_.erase(pending_.begin(), pending_.begin() + count);
    return samples;
}

void PipeMicrophone::run() {
    auto due = std::chrono::steady_clock::now();
    while (!isStopping_) {
        const std::vector<std::int16_t> samples = nextChunk();
        // The samples are lost when the pipe is full, as the sound is that an unused microphone
        // hears. A chunk is shorter than PIPE_BUF, so the pipe takes it whole or not at all.
        [[maybe_unused]] const ssize_t written =
            write(pipe_, samples.data(), samples.size() * sizeof(std::int16_t));
        due += chunkInterval;
        std::this_thread::sleep_until(due);
    }
}

}  // namespace tarvik::tests
