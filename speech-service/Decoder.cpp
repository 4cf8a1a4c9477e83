// SPDX-License-Identifier: MIT

#include "speech-service/Decoder.h"

#include <pocketsphinx.h>
#if __has_include(<pocketsphinx/err.h>)
#include <pocketsphinx/err.h>
#else
#include <sphinxbase/err.h>
#endif

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string_view>

#include "speech-service/PocketSphinx.h"

namespace tarvik::service {

namespace {

constexpr double framesPerSecond = 100;

struct SegmentDeleter {
    void operator()(ps_seg_t* segment) const { ps_seg_free(segment); }
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

SpeechModel englishModel() {
    const std::string folder = TARVIK_SPEECH_MODEL;
    return {folder + "/en-us", folder + "/en-us.lm.bin", folder + "/cmudict-en-us.dict"};
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

Decoder::Decoder(std::unique_ptr<PocketSphinx> library) : library_(std::move(library)) {}

Decoder::~Decoder() = default;

Result<std::unique_ptr<Decoder>> Decoder::load() {
    static std::once_flag isReportingSet;
    std::call_once(isReportingSet, [] { err_set_callback(printErrors, nullptr); });
    std::unique_ptr<PocketSphinx> library = PocketSphinx::load(englishModel());
    if (!library) {
        return Error{0, "The speech models in " TARVIK_SPEECH_MODEL " could not be loaded"};
    }
    return std::unique_ptr<Decoder>(new Decoder(std::move(library)));
}

void Decoder::startStream() {
    library_->startStream();
}

void Decoder::startUtterance() {
    isEnded_ = false;
    library_->startUtterance();
}

void Decoder::process(std::span<const std::int16_t> samples) {
    library_->process(samples);
}

bool Decoder::isInSpeech() const {
    return library_->isInSpeech();
}

std::vector<Word> Decoder::words() const {
    std::vector<Word> words;
    logmath_t* logarithms = ps_get_logmath(library_->decoder());
    // ps_seg_next frees the old segment and returns null at the end, so it takes the pointer over.
    std::unique_ptr<ps_seg_t, SegmentDeleter> segment(ps_seg_iter(library_->decoder()));
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
    std::unique_ptr<ps_seg_t, SegmentDeleter> segment(ps_seg_iter(library_->decoder()));
    for (; segment; segment.reset(ps_seg_next(segment.release()))) {
        int first = 0;
        int last = 0;
        ps_seg_frames(segment.get(), &first, &last);
        pauseFrames = isSpokenWord(ps_seg_word(segment.get())) ? 0 : pauseFrames + last + 1 - first;
    }
    return Seconds(pauseFrames / framesPerSecond);
}

void Decoder::endUtterance() {
    library_->endUtterance();
    isEnded_ = true;
}

}  // namespace tarvik::service
