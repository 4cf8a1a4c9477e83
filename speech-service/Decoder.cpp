// SPDX-License-Identifier: MIT

#include "speech-service/Decoder.h"

#include <pocketsphinx/pocketsphinx.h>
#include <sphinxbase/err.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string_view>

namespace tarvik::service {

namespace {

constexpr double framesPerSecond = 100;

struct SegmentDeleter {
    void operator()(ps_seg_t* segment) const { ps_seg_free(segment); }
};
struct ConfigurationDeleter {
    void operator()(cmd_ln_t* configuration) const { cmd_ln_free_r(configuration); }
};

// The library reports errors and progress here; only errors are printed.
__attribute__((format(printf, 3, 4))) void printErrors(void*, err_lvl_t level, const char* format,
                                                       ...) {
    if (level < ERR_ERROR) {
        return;
    }
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(stderr, format, arguments);
    va_end(arguments);
}

std::unique_ptr<cmd_ln_t, ConfigurationDeleter> configuration() {
    const std::string model = TARVIK_SPEECH_MODEL;
    const std::string acoustics = model + "/en-us";
    const std::string language = model + "/en-us.lm.bin";
    const std::string dictionary = model + "/cmudict-en-us.dict";
    // The weights of the later passes come from trials with dictated sentences. The threshold keeps
    // microphone hiss from counting as speech. With a lower threshold, a second of hiss before the
    // first word spoils the whole utterance.
    return std::unique_ptr<cmd_ln_t, ConfigurationDeleter>(
        cmd_ln_init(nullptr, ps_args(), TRUE, "-hmm", acoustics.c_str(), "-lm", language.c_str(),
                    "-dict", dictionary.c_str(), "-fwdflatlw", "7.5", "-bestpathlw", "7.5",
                    "-vad_threshold", "3.0", nullptr));
}

// Sentence marks, silences and noises are in angle brackets, square brackets or plus signs.
bool isSpokenWord(std::string_view word) {
    return !word.empty() && word.front() != '<' && word.front() != '[' && word.front() != '+';
}

// A further pronunciation of a word has a number, as in "the(2)".
std::string withoutVariant(std::string_view word) {
    return std::string(word.substr(0, word.find('(')));
}

}  // namespace

void Decoder::Deleter::operator()(ps_decoder_s* decoder) const {
    ps_free(decoder);
}

Decoder::Decoder(ps_decoder_s* decoder) : decoder_(decoder) {
    const feat_t* features = ps_get_feat(decoder);
    initialMeans_.resize(static_cast<std::size_t>(features->cmn_struct->veclen));
    cmn_live_get(features->cmn_struct, initialMeans_.data());
}

Result<std::unique_ptr<Decoder>> Decoder::load() {
    static std::once_flag isReportingSet;
    std::call_once(isReportingSet, [] { err_set_callback(printErrors, nullptr); });
    // With a log file, which is per thread, the library prints every setting of a decoder.
    err_set_logfp(nullptr);
    const auto settings = configuration();
    ps_decoder_t* decoder = settings ? ps_init(settings.get()) : nullptr;
    if (!decoder) {
        return Error{0, "The speech models in " TARVIK_SPEECH_MODEL " could not be loaded"};
    }
    return std::unique_ptr<Decoder>(new Decoder(decoder));
}

void Decoder::startStream() {
    cmn_t* normalization = ps_get_feat(decoder_.get())->cmn_struct;
    std::copy(initialMeans_.begin(), initialMeans_.end(), normalization->cmn_mean);
    std::fill_n(normalization->sum, normalization->veclen, 0.0F);
    normalization->nframe = 0;
    ps_start_stream(decoder_.get());
}

void Decoder::startUtterance() {
    isEnded_ = false;
    ps_start_utt(decoder_.get());
}

void Decoder::process(std::span<const std::int16_t> samples) {
    ps_process_raw(decoder_.get(), samples.data(), samples.size(), FALSE, FALSE);
}

bool Decoder::isInSpeech() const {
    return ps_get_in_speech(decoder_.get()) != 0;
}

std::vector<Word> Decoder::words() const {
    std::vector<Word> words;
    logmath_t* logarithms = ps_get_logmath(decoder_.get());
    // ps_seg_next frees the old segment and returns null at the end, so it takes the pointer over.
    std::unique_ptr<ps_seg_t, SegmentDeleter> segment(ps_seg_iter(decoder_.get()));
    for (; segment; segment.reset(ps_seg_next(segment.release()))) {
        const std::string_view word = ps_seg_word(segment.get());
        if (!isSpokenWord(word)) {
            continue;
        }
        int first = 0;
        int last = 0;
        ps_seg_frames(segment.get(), &first, &last);
        const int posterior = ps_seg_prob(segment.get(), nullptr, nullptr, nullptr);
        const double confidence =
            isEnded_ ? std::clamp(logmath_exp(logarithms, posterior), 0.0, 1.0) : 0.0;
        words.push_back({withoutVariant(word), Seconds(first / framesPerSecond),
                         Seconds((last + 1) / framesPerSecond), confidence});
    }
    return words;
}

Seconds Decoder::trailingPause() const {
    int pauseFrames = 0;
    std::unique_ptr<ps_seg_t, SegmentDeleter> segment(ps_seg_iter(decoder_.get()));
    for (; segment; segment.reset(ps_seg_next(segment.release()))) {
        int first = 0;
        int last = 0;
        ps_seg_frames(segment.get(), &first, &last);
        pauseFrames = isSpokenWord(ps_seg_word(segment.get())) ? 0 : pauseFrames + last + 1 - first;
    }
    return Seconds(pauseFrames / framesPerSecond);
}

void Decoder::endUtterance() {
    ps_end_utt(decoder_.get());
    isEnded_ = true;
}

}  // namespace tarvik::service
