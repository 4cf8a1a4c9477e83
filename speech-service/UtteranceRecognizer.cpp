#include "speech-service/UtteranceRecognizer.h"

#include <algorithm>

#include "speech-service/Resampler.h"

namespace tarvik::service {

namespace {

// Short enough to place the beginning of speech well, long enough to cost nothing.
constexpr std::size_t pieceSize = recognitionRate / 50;

constexpr Seconds interimInterval{0.5};

// Settling an utterance takes a share of its length, and a client that closes waits about two
// seconds for it: speech that goes on is cut at the first small pause after the first of these
// lengths, and anywhere after the second.
constexpr Seconds comfortableLength{10};
constexpr Seconds greatestLength{18};
constexpr Seconds smallPause{0.12};

std::vector<std::string> textsOf(const std::vector<Word>& words) {
    std::vector<std::string> texts;
    texts.reserve(words.size());
    for (const Word& word : words) {
        texts.push_back(word.text);
    }
    return texts;
}

}  // namespace

UtteranceRecognizer::UtteranceRecognizer(Decoder& decoder, bool interimResults, Receiver receiver)
    : decoder_(decoder), interimResults_(interimResults), receiver_(std::move(receiver)) {
    decoder_.startStream();
    decoder_.startUtterance();
}

UtteranceRecognizer::~UtteranceRecognizer() {
    decoder_.endUtterance();
}

void UtteranceRecognizer::process(std::span<const std::int16_t> samples) {
    while (!samples.empty()) {
        const std::size_t size = std::min(samples.size(), pieceSize);
        processPiece(samples.first(size));
        samples = samples.subspan(size);
    }
}

void UtteranceRecognizer::finish() {
    if (isInSpeech_) {
        endSpeech(Ending::request);
    }
}

void UtteranceRecognizer::processPiece(std::span<const std::int16_t> piece) {
    decoder_.process(piece);
    position_ += Seconds(static_cast<double>(piece.size()) / recognitionRate);
    if (!decoder_.hearsSpeech()) {
        if (isInSpeech_) {
            endSpeech(Ending::pause);
        }
        return;
    }
    if (!isInSpeech_) {
        startSpeech();
    }
    if (position_ - lastLook_ >= interimInterval) {
        lastLook_ = position_;
        const Seconds length = position_ - speechStart_;
        if (length >= greatestLength ||
            (length >= comfortableLength && decoder_.trailingPause() >= smallPause)) {
            endSpeech(Ending::cut);
        } else if (interimResults_) {
            reportInterim();
        }
    }
}

void UtteranceRecognizer::startSpeech() {
    isInSpeech_ = true;
    speechStart_ = std::max(lastEnd_, position_ - Decoder::lookBehind);
    lastLook_ = position_;
}

void UtteranceRecognizer::reportInterim() {
    Utterance utterance;
    addWords(utterance);
    if (std::vector<std::string> texts = textsOf(utterance.words); texts != lastInterim_) {
        lastInterim_ = std::move(texts);
        receiver_(utterance);
    }
}

void UtteranceRecognizer::endSpeech(Ending ending) {
    decoder_.endUtterance();
    Utterance utterance;
    addWords(utterance);
    utterance.isFinal = true;
    utterance.isSpeechFinal = ending != Ending::cut;
    utterance.isFromFinalize = ending == Ending::request;
    // A noise that had words for a moment needs their withdrawal; any other is nobody's business.
    const bool isWorthTelling = !utterance.words.empty() || !lastInterim_.empty();
    lastInterim_.clear();
    lastEnd_ = position_;
    isInSpeech_ = false;
    isContinuation_ = ending == Ending::cut;
    decoder_.startUtterance();
    if (isWorthTelling) {
        receiver_(utterance);
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
