// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/linux/loop/FileDescriptor.h"
#include "tests/linux/audio/SoundServer.h"

namespace tarvik::tests {

/// The default microphone of a sound server, with exactly the samples that a test writes. The
/// server reads them while something records. One thread at a time.
class ManualMicrophone {
  public:
    static constexpr std::uint32_t sampleRate = 16000;

    explicit ManualMicrophone(const SoundServer& server);

    /// Writes `frameCount` frames of the value `sample`. More than the pipe holds fails the test.
    void write(std::size_t frameCount, std::int16_t sample);

  private:
    const std::string pipe_;
    linuxdesktop::FileDescriptor descriptor_;
};

}  // namespace tarvik::tests
