// SPDX-License-Identifier: MIT

#include "speech-service/WhisperDecoder.h"

#include <whisper.h>

#include <algorithm>
#include <string>
#include <thread>

#include "speech-service/Resampler.h"
#include "speech-service/WrittenText.h"

namespace tarvik::service {

namespace {

static_assert(recognitionRate == WHISPER_SAMPLE_RATE);

// Interim words come every half second, and the sound of that time has to be heard meanwhile.
constexpr std::chrono::milliseconds interimDeadline{400};
// The library decodes nothing shorter than a second.
constexpr std::size_t minSamples = recognitionRate * 11 / 10;
// The encoder takes 50 steps a second and 30 s without this limit, whatever the utterance's length.
constexpr int encoderStepsPerSecond = 50;
constexpr int minEncoderSteps = 384;
constexpr int maxEncoderSteps = 1500;
// Nobody speaks faster. A model that repeats itself stops here.
constexpr int tokensPerSecond = 8;
constexpr int minTokens = 16;
constexpr double timeUnitsPerSecond = 100;

Seconds lengthOf(const std::vector<float>& sound) {
    return Seconds(static_cast<double>(sound.size()) / recognitionRate);
}

int threadCount() {
    return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 4U));
}

whisper_full_params parametersFor(Seconds length) {
    whisper_full_params parameters = whisper_full_default_params(WHISPER_SAMPLING_GREEDY);
    const auto seconds = static_cast<int>(length.count() + 1);
    parameters.n_threads = threadCount();
    parameters.language = "en";
    parameters.no_context = true;
    parameters.single_segment = true;
    parameters.token_timestamps = true;
    parameters.print_progress = false;
    parameters.print_timestamps = false;
    parameters.suppress_nst = true;
    // A second try with another temperature would double the wait.
    parameters.temperature_inc = 0;
    parameters.greedy.best_of = 1;
    parameters.max_tokens = minTokens + tokensPerSecond * seconds;
    parameters.audio_ctx =
        std::clamp(encoderStepsPerSecond * (seconds + 1), minEncoderSteps, maxEncoderSteps);
    return parameters;
}

}  // namespace

void WhisperDecoder::Deleter::operator()(whisper_state* state) const {
    whisper_free_state(state);
}

WhisperDecoder::WhisperDecoder(whisper_context* context, whisper_state* state)
    : context_(context), state_(state) {}

WhisperDecoder::~WhisperDecoder() = default;

void WhisperDecoder::startStream() {
    isAborted_ = false;
}

void WhisperDecoder::startUtterance() {
    sound_.clear();
    hypothesis_ = {};
    hasQuickPasses_ = true;
}

void WhisperDecoder::process(std::span<const std::int16_t> samples) {
    std::transform(samples.begin(), samples.end(), std::back_inserter(sound_),
                   [](std::int16_t sample) { return static_cast<float>(sample) / 32768.0F; });
}

void WhisperDecoder::refresh() {
    hasQuickPasses_ = hasQuickPasses_ && decode(Clock::now() + interimDeadline);
}

std::vector<Word> WhisperDecoder::endUtterance() {
    decode(Clock::time_point::max());
    return hypothesis_.words;
}

bool WhisperDecoder::mustStop(void* decoder) {
    const auto* self = static_cast<const WhisperDecoder*>(decoder);
    return self->isAborted_ || Clock::now() > self->deadline_;
}

bool WhisperDecoder::decode(Clock::time_point deadline) {
    deadline_ = deadline;
    std::vector<float> sound = sound_;
    sound.resize(std::max(sound.size(), minSamples));
    whisper_full_params parameters = parametersFor(lengthOf(sound));
    parameters.abort_callback = &WhisperDecoder::mustStop;
    parameters.abort_callback_user_data = this;
    if (mustStop(this) || whisper_full_with_state(context_, state_.get(), parameters, sound.data(),
                                                  static_cast<int>(sound.size())) != 0) {
        return false;
    }
    hypothesis_ = {wordsOfState(), lengthOf(sound_)};
    return true;
}

std::vector<Word> WhisperDecoder::wordsOfState() const {
    TextPieces pieces;
    for (int segment = 0; segment < whisper_full_n_segments_from_state(state_.get()); ++segment) {
        const int tokens = whisper_full_n_tokens_from_state(state_.get(), segment);
        for (int i = 0; i < tokens; ++i) {
            const whisper_token_data token =
                whisper_full_get_token_data_from_state(state_.get(), segment, i);
            // The tokens from the end of text on are marks and times.
            if (token.id < whisper_token_eot(context_)) {
                const char* text =
                    whisper_full_get_token_text_from_state(context_, state_.get(), segment, i);
                pieces.push_back({text, Seconds(static_cast<double>(token.t0) / timeUnitsPerSecond),
                                  Seconds(static_cast<double>(token.t1) / timeUnitsPerSecond),
                                  static_cast<double>(token.p)});
            }
        }
    }
    return wordsOfWrittenText(pieces);
}

}  // namespace tarvik::service
