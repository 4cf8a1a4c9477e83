// SPDX-License-Identifier: MIT
// Writes a model of whisper.cpp with random weights, for measuring time and memory without a real
// one.

#include <cstdlib>
#include <iostream>
#include <map>
#include <string_view>

#include "tests/speech-service/WhisperModelFile.h"

int main(int argumentCount, char** arguments) {
    using tarvik::service::WhisperSize;
    const std::map<std::string_view, WhisperSize> sizes{
        {"tiny", {384, 4, true}}, {"base", {512, 6, true}}, {"small", {768, 12, true}}};
    const auto size = argumentCount == 3 ? sizes.find(arguments[1]) : sizes.end();
    if (size == sizes.end()) {
        std::cerr << "usage: random-whisper-model tiny|base|small FILE\n";
        return EXIT_FAILURE;
    }
    tarvik::service::writeRandomWhisperModel(arguments[2], size->second);
    return EXIT_SUCCESS;
}
