// SPDX-License-Identifier: MIT

#include "speech-service/Resampler.h"

#include <samplerate.h>

#include <array>

namespace tarvik::service {

void Resampler::Deleter::operator()(SRC_STATE_tag* state) const {
    src_delete(state);
}

Resampler::Resampler(SRC_STATE_tag* state, int inputRate) : state_(state), inputRate_(inputRate) {}

Result<Resampler> Resampler::create(int inputRate) {
    // The acoustic model uses 130 Hz to 6.8 kHz, and the sinc filter keeps all of that range. Audio
    // of a lower rate has nothing in the upper part, and the model takes that for other sounds.
    // Linear interpolation mirrors the lower part there, and recognition is far better then.
    const int method = inputRate < recognitionRate ? SRC_LINEAR : SRC_SINC_MEDIUM_QUALITY;
    int status = 0;
    SRC_STATE* state = src_new(method, 1, &status);
    if (!state) {
        return Error{status, "No resampler: " + std::string(src_strerror(status))};
    }
    return Resampler(state, inputRate);
}

std::vector<std::int16_t> Resampler::process(std::span<const float> samples) {
    return convert(samples, false);
}

std::vector<std::int16_t> Resampler::finish() {
    return convert({}, true);
}

std::vector<std::int16_t> Resampler::convert(std::span<const float> samples, bool isLast) {
    std::vector<std::int16_t> output;
    std::array<float, 4096> chunk;
    SRC_DATA data{};
    // The library does not accept a null pointer, not even for no samples.
    const float none = 0;
    data.data_in = samples.empty() ? &none : samples.data();
    data.input_frames = static_cast<long>(samples.size());
    data.data_out = chunk.data();
    data.output_frames = chunk.size();
    data.src_ratio = static_cast<double>(recognitionRate) / inputRate_;
    data.end_of_input = isLast ? 1 : 0;
    do {
        // Fails only for arguments out of range; create() and the lines above exclude those.
        src_process(state_.get(), &data);
        const std::size_t size = output.size();
        const auto made = static_cast<std::size_t>(data.output_frames_gen);
        output.resize(size + made);
        src_float_to_short_array(chunk.data(), output.data() + size, static_cast<int>(made));
        data.data_in += data.input_frames_used;
        data.input_frames -= data.input_frames_used;
    } while (data.input_frames > 0 || data.output_frames_gen == data.output_frames);
    return output;
}

}  // namespace tarvik::service
