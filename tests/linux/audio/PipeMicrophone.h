#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

namespace tarvik::tests {

/// The hardware behind a pipe source: writes samples into its pipe at the pace of a microphone,
/// what it is given to say, and silence for the rest of the time.
class PipeMicrophone {
  public:
    PipeMicrophone(const std::filesystem::path& pipe, std::uint32_t sampleRate,
                   std::uint32_t channelCount);
    /// Falls silent for good.
    ~PipeMicrophone();
    PipeMicrophone(const PipeMicrophone&) = delete;
    PipeMicrophone& operator=(const PipeMicrophone&) = delete;

    void speak(const std::vector<std::int16_t>& samples);

  private:
    void run();
    std::vector<std::int16_t> nextPiece();

    int pipe_;
    std::size_t pieceSamples_;
    std::mutex mutex_;
    std::vector<std::int16_t> toSay_;
    std::atomic<bool> ended_ = false;
    std::thread thread_;
};

}  // namespace tarvik::tests
