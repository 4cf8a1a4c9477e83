// SPDX-License-Identifier: MIT

#include "tests/linux/audio/ManualMicrophone.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

namespace tarvik::tests {

ManualMicrophone::ManualMicrophone(const SoundServer& server)
    : pipe_((server.folder() / "manual").string()) {
    server.control({"load-module", "module-pipe-source",
                    "source_name=manual file=" + pipe_ +
                        " format=s16le channels=1 rate=" + std::to_string(sampleRate)});
    server.control({"set-default-source", "manual"});
    descriptor_ =
        linuxdesktop::FileDescriptor(open(pipe_.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC));
}

void ManualMicrophone::write(std::size_t frameCount, std::int16_t sample) {
    const std::vector<std::int16_t> samples(frameCount, sample);
    const auto size = static_cast<ssize_t>(samples.size() * sizeof sample);
    EXPECT_EQ(::write(descriptor_.number(), samples.data(), static_cast<std::size_t>(size)), size);
}

}  // namespace tarvik::tests
