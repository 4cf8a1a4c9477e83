// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

namespace tarvik::tests {

/// The hardware behind a pipe source: a thread that writes samples into the pipe at the rate of a
/// microphone. It writes the samples of speak(), and silence the rest of the time.
class PipeMicrophone {
  public:
    PipeMicrophone(const std::filesystem::path& pipe, std::uint32_t sampleRate,
                   std::uint32_t channelCount);
    /// Ends the thread.
    ~PipeMicrophone();
    PipeMicrophone(const PipeMicrophone&) = delete;
    PipeMicrophone& operator=(const PipeMicrophone&) = delete;

    /// Appends interleaved samples to be written.
    void speak(const std::vector<std::int16_t>& samples);

  private:
    void run();
    std::vector<std::int16_t> nextChunk();

    int pipe_;
    std::size_t chunkSamples_;
    std::mutex mutex_;
    std::vector<std::int16_t> pending_;
    std::atomic<bool> isStopping_ = false;
    std::thread thread_;
};

}  // namespace tarvik::tests
