// SPDX-License-Identifier: MIT

#include "speech-service/UtteranceRecognizer.h"

#include <algorithm>

#include "speech-service/Resampler.h"

namespace tarvik::service {

namespace {

// 20 ms: short enough for a good start time of the speech, long enough for a low overhead.
constexpr std::size_t chunkSize = recognitionRate / 50;

constexpr Seconds interimInterval{0.5};

// The end of an utterance takes time in proportion to its length, and a closing client waits about
// 2 s for it. So long speech is cut: at a short pause after softMaxLength, anywhere after
// maxLength.
constexpr Seconds softMaxLength{10};
constexpr Seconds maxLength{18};
constexpr Seconds minCutPause{0.12};

std::vector<std::string> textsOf(const std::vector<Word>& words) {
    std::vector<std::string> texts;
    texts.reserve(words.size());
    for (const Word& word : words) {
        texts.push_back(word.text);
    }
    return texts;
}

}  // namespace

UtteranceRecognizer::UtteranceRecognizer(Decoder& decoder, bool interimResults,
                                         UtteranceHandler onUtterance)
    : decoder_(decoder), interimResults_(interimResults), onUtterance_(std::move(onUtterance)) {
    decoder_.startStream();
    decoder_.startUtterance();
}

UtteranceRecognizer::~UtteranceRecognizer() {
    decoder_.endUtterance();
}

void UtteranceRecognizer::process(std::span<const std::int16_t> samples) {
    while (!samples.empty()) {
        const std::size_t size = std::min(samples.size(), chunkSize);
        processChunk(samples.first(size));
        samples = samples.subspan(size);
    }
}

void UtteranceRecognizer::finish() {
    if (isInSpeech_) {
        endSpeech(EndReason::request);
    }
}

void UtteranceRecognizer::processChunk(std::span<const std::int16_t> chunk) {
    decoder_.process(chunk);
    position_ += Seconds(static_cast<double>(chunk.size()) / recognitionRate);
    if (!decoder_.isInSpeech()) {
        if (isInSpeech_) {
            endSpeech(EndReason::pause);
        }
        return;
    }
    if (!isInSpeech_) {
        startSpeech();
    }
    if (position_ - lastCheck_ >= interimInterval) {
        lastCheck_ = position_;
        const Seconds length = position_ - speechStart_;
        if (length >= maxLength ||
            (length >= softMaxLength && decoder_.trailingPause() >= minCutPause)) {
            endSpeech(EndReason::cut);
        } else if (interimResults_) {
            reportInterim();
        }
    }
}

void UtteranceRecognizer::startSpeech() {
    isInSpeech_ = true;
    speechStart_ = std::max(lastEnd_, position_ - Decoder::preSpeech);
    lastCheck_ = position_;
}

void UtteranceRecognizer::reportInterim() {
    Utterance utterance;
    addWords(utterance);
    if (std::vector<std::string> texts = textsOf(utterance.words); texts != lastInterim_) {
        lastInterim_ = std::move(texts);
        onUtterance_(utterance);
    }
}

void UtteranceRecognizer::endSpeech(EndReason reason) {
    decoder_.endUtterance();
    Utterance utterance;
    addWords(utterance);
    utterance.isFinal = true;
    utterance.isSpeechFinal = reason != EndReason::cut;
    utterance.isFromFinalize = reason == EndReason::request;
    // An empty final utterance withdraws interim words. Without interim words nobody needs it.
    const bool mustReport = !utterance.words.empty() || !lastInterim_.empty();
    lastInterim_.clear();
    lastEnd_ = position_;
    isInSpeech_ = false;
    isContinuation_ = reason == EndReason::cut;
    decoder_.startUtterance();
    if (mustReport) {
        onUtterance_(utterance);
    }
}

void UtteranceRecognizer::addWords(Utterance& utterance) const {
    utterance.start = speechStart_;
    utterance.duration = position_ - speechStart_;
    utterance.isContinuation = isContinuation_;
    utterance.words = decoder_.words();
    for (Word& word : utterance.words) {
        word.start = std::min(word.start + speechStart_, position_);
        word.end = std::min(word.end + speechStart_, position_);
    }
}

}  // namespace tarvik::service
