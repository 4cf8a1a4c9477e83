// SPDX-License-Identifier: MIT

#include "speech-service/PocketSphinxDecoder.h"

#include <pocketsphinx.h>
#if __has_include(<pocketsphinx/err.h>)
#include <pocketsphinx/err.h>
#else
#include <sphinxbase/err.h>
#endif

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>

#include "speech-service/PocketSphinx.h"
#include "speech-service/Resampler.h"

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

// Sentence marks, silences and noises are in angle brackets, square brackets or plus signs.
bool isSpokenWord(std::string_view word) {
    return !word.empty() && word.front() != '<' && word.front() != '[' && word.front() != '+';
}

// A further pronunciation of a word has a number, as in "the(2)".
std::string withoutVariant(std::string_view word) {
    return std::string(word.substr(0, word.find('(')));
}

}  // namespace

PocketSphinxDecoder::PocketSphinxDecoder(std::unique_ptr<PocketSphinx> library)
    : library_(std::move(library)) {}

PocketSphinxDecoder::~PocketSphinxDecoder() = default;

Result<std::unique_ptr<Decoder>> PocketSphinxDecoder::load(const std::filesystem::path& model) {
    static std::once_flag isReportingSet;
    std::call_once(isReportingSet, [] { err_set_callback(printErrors, nullptr); });
    std::unique_ptr<PocketSphinx> library =
        PocketSphinx::load({model / "en-us", model / "en-us.lm.bin", model / "cmudict-en-us.dict"});
    if (!library) {
        return Error{0, "The speech models in " + model.string() + " could not be loaded"};
    }
    return std::unique_ptr<Decoder>(new PocketSphinxDecoder(std::move(library)));
}

void PocketSphinxDecoder::startStream() {
    library_->startStream();
}

void PocketSphinxDecoder::startUtterance() {
    processed_ = {};
    ps_start_utt(library_->decoder());
}

void PocketSphinxDecoder::process(std::span<const std::int16_t> samples) {
    ps_process_raw(library_->decoder(), samples.data(), samples.size(), FALSE, FALSE);
    processed_ += Seconds(static_cast<double>(samples.size()) / recognitionRate);
}

Hypothesis PocketSphinxDecoder::hypothesis() const {
    return {words(false), processed_};
}

std::vector<Word> PocketSphinxDecoder::endUtterance() {
    ps_end_utt(library_->decoder());
    return words(true);
}

std::vector<Word> PocketSphinxDecoder::words(bool hasConfidence) const {
    std::vector<Word> words;
    logmath_t* logarithms = ps_get_logmath(library_->decoder());
    // ps_seg_next frees the old segment and returns null at the end, so it takes the pointer over.
    std::unique_ptr<ps_seg_t, SegmentDeleter> segment(ps_seg_iter(library_->decoder()));
    // Some releases count the frames from the start of the stream. An utterance begins with the
    // mark of a sentence.
    int start = 0;
    int last = 0;
    if (segment) {
        ps_seg_frames(segment.get(), &start, &last);
    }
    for (; segment; segment.reset(ps_seg_next(segment.release()))) {
        const std::string_view word = ps_seg_word(segment.get());
        if (!isSpokenWord(word)) {
            continue;
        }
        int first = 0;
        ps_seg_frames(segment.get(), &first, &last);
        const int posterior = ps_seg_prob(segment.get(), nullptr, nullptr, nullptr);
        const double confidence =
            hasConfidence ? std::clamp(logmath_exp(logarithms, posterior), 0.0, 1.0) : 0.0;
        words.push_back({withoutVariant(word), Seconds((first - start) / framesPerSecond),
                         Seconds((last + 1 - start) / framesPerSecond), confidence});
    }
    return words;
}

}  // namespace tarvik::service
