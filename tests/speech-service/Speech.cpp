// SPDX-License-Identifier: MIT

#include "tests/speech-service/Speech.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/support/TemporaryFolder.h"

namespace tarvik::service {

namespace {

void run(const std::string& command) {
    if (std::system(command.c_str()) != 0) {
        throw std::runtime_error("failed: " + command);
    }
}

}  // namespace

Audio speech(const std::string& text, int rate, double lead, double tail) {
    const tests::TemporaryFolder folder;
    const std::string spoken = (folder / "spoken.wav").string();
    const std::string converted = (folder / "converted.raw").string();
    run("flite -voice slt -t '" + text + "' -o " + spoken);
    run("sox -D " + spoken + " -t raw -e signed -b 16 -c 1 -r " + std::to_string(rate) + " " +
        converted + " pad " + std::to_string(lead) + " " + std::to_string(tail));
    std::ifstream file(converted, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Audio silence(int rate, double seconds) {
    return Audio(static_cast<std::size_t>(rate * seconds) * 2);
}

}  // namespace tarvik::service
