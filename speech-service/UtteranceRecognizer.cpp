// SPDX-License-Identifier: MIT

#include "speech-service/UtteranceRecognizer.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "speech-service/Resampler.h"

namespace tarvik::service {

namespace {

constexpr std::size_t frameSize = SpeechDetector::frameSize;
static_assert(frameSize * 100 == recognitionRate);

constexpr std::size_t framesIn(Seconds time) {
    return static_cast<std::size_t>(time / SpeechDetector::frameLength + 0.5);
}

constexpr std::size_t interimInterval = framesIn(Seconds(0.5));
// The longest lead of an onset, and some more.
constexpr std::size_t idleHistory = framesIn(Seconds(1));
constexpr std::size_t minCutLength = framesIn(Seconds(10));
// The end of an utterance takes time in proportion to its length, and a closing client waits about
// 2 s for it.
constexpr std::size_t maxLength = framesIn(Seconds(14));
// The last word before a cut is decoded with a little of what follows.
constexpr std::size_t cutContext = framesIn(Seconds(0.3));
constexpr Seconds cutPause{0.15};

std::vector<std::string> textsOf(const std::vector<Word>& words) {
    std::vector<std::string> texts;
    texts.reserve(words.size());
    for (const Word& word : words) {
        texts.push_back(word.text);
    }
    return texts;
}

}  // namespace

Seconds UtteranceRecognizer::timeOf(Frames frames) {
    return SpeechDetector::frameLength * static_cast<double>(frames);
}

UtteranceRecognizer::UtteranceRecognizer(Decoder& decoder, const RecognitionOptions& options,
                                         Handlers handlers)
    : decoder_(decoder),
      options_(options),
      sentencePause_(options.endpointing.value_or(*RecognitionOptions().endpointing)),
      settlePause_(std::min(sentencePause_, Seconds(0.5))),
      handlers_(std::move(handlers)) {
    decoder_.startStream();
}

UtteranceRecognizer::~UtteranceRecognizer() {
    if (isInSpeech_) {
        decoder_.abort();
        decoder_.endUtterance();
    }
}

void UtteranceRecognizer::process(std::span<const std::int16_t> samples) {
    rest_.insert(rest_.end(), samples.begin(), samples.end());
    std::span<const std::int16_t> unread = rest_;
    while (unread.size() >= frameSize) {
        processFrame(unread.first<frameSize>());
        unread = unread.subspan(frameSize);
    }
    rest_.erase(rest_.begin(), rest_.end() - static_cast<std::ptrdiff_t>(unread.size()));
}

void UtteranceRecognizer::processFrame(std::span<const std::int16_t, frameSize> frame) {
    detector_.process(frame);
    audio_.insert(audio_.end(), frame.begin(), frame.end());
    levels_.push_back(detector_.level());
    ++frames_;
    if (isInSpeech_) {
        decoder_.process(frame);
        continueSpeech();
    } else if (detector_.hasOnset()) {
        startSpeech();
    } else {
        checkHeld();
        if (levels_.size() > 2 * idleHistory) {
            forgetAudioBefore(frames_ - idleHistory);
        }
    }
    checkUtteranceEnd();
}

void UtteranceRecognizer::startSpeech() {
    const Frames age = framesIn(detector_.onsetAge());
    beginUtterance(std::max({lastEnd_, audioStart_, frames_ - std::min(frames_, age)}));
    if (options_.speechEvents) {
        handlers_.onSpeechStarted(timeOf(utteranceStart_));
    }
}

void UtteranceRecognizer::beginUtterance(Frames start) {
    isInSpeech_ = true;
    utteranceStart_ = start;
    lastCheck_ = frames_;
    forgetAudioBefore(start);
    decoder_.startUtterance();
    decoder_.process(audio_);
}

void UtteranceRecognizer::continueSpeech() {
    if (detector_.pause() >= settlePause_) {
        settlePause();
        return;
    }
    const Frames length = frames_ - utteranceStart_;
    if (length >= maxLength) {
        cut(utteranceStart_ + minCutLength, frames_ - cutContext);
        return;
    }
    if (length >= minCutLength && detector_.pause() >= cutPause) {
        cut(frames_ - framesIn(detector_.pause()), frames_);
        return;
    }
    if (frames_ - lastCheck_ >= interimInterval) {
        lastCheck_ = frames_;
        if (held_ || options_.interimResults) {
            reportInterim();
        }
    }
}

void UtteranceRecognizer::settlePause() {
    Utterance utterance = utteranceOf(endDecoding());
    utterance.isSpeechFinal = options_.endpointing.has_value();
    isInSpeech_ = false;
    lastEnd_ = frames_;
    hold(std::move(utterance));
    checkHeld();
}

void UtteranceRecognizer::hold(Utterance utterance) {
    if (!utterance.words.empty()) {
        releaseHeld(false);
        utterance.isContinuation = isContinuation_;
        held_ = std::move(utterance);
    } else if (!held_ && !lastInterim_.empty()) {
        // An empty final utterance withdraws interim words. Without interim words nobody needs it,
        // and those of the held utterance are the last ones while there is one.
        report(utterance);
    }
}

void UtteranceRecognizer::cut(Frames earliest, Frames latest) {
    const std::vector<Word> words = endDecoding();
    const Frames cut = betweenWords(words, quietest(earliest, latest),
                                    std::min(earliest, utteranceStart_ + minCutLength), latest);
    std::vector<Word> before;
    const Seconds cutTime = timeOf(cut - utteranceStart_);
    std::copy_if(words.begin(), words.end(), std::back_inserter(before),
                 [&](const Word& word) { return (word.start + word.end) / 2 < cutTime; });
    Utterance utterance = utteranceOf(std::move(before));
    utterance.duration = cutTime;
    lastEnd_ = cut;
    hold(std::move(utterance));
    beginUtterance(cut);
}

std::vector<Word> UtteranceRecognizer::endDecoding() {
    handlers_.onSettling(unfinished());
    return decoder_.endUtterance();
}

double UtteranceRecognizer::levelAround(Frames frame) const {
    constexpr Frames reach = 4;
    const Frames index = frame - audioStart_;
    const Frames first = index - std::min(index, reach);
    const Frames last = std::min(index + reach + 1, levels_.size());
    const auto from = levels_.begin() + static_cast<std::ptrdiff_t>(first);
    const auto to = levels_.begin() + static_cast<std::ptrdiff_t>(last);
    return std::accumulate(from, to, 0.0) / static_cast<double>(last - first);
}

UtteranceRecognizer::Frames UtteranceRecognizer::quietest(Frames earliest, Frames latest) const {
    Frames best = earliest;
    for (Frames frame = earliest; frame < latest; ++frame) {
        best = levelAround(frame) < levelAround(best) ? frame : best;
    }
    return best;
}

// The quietest sound may be the closed lips inside a word. Then the quietest end of a word is
// taken.
UtteranceRecognizer::Frames UtteranceRecognizer::betweenWords(const std::vector<Word>& words,
                                                              Frames cut, Frames earliest,
                                                              Frames latest) const {
    const Seconds cutTime = timeOf(cut - utteranceStart_);
    const bool isInWord = std::any_of(words.begin(), words.end(), [&](const Word& word) {
        constexpr Seconds tolerance{0.03};
        return word.start + tolerance < cutTime && cutTime < word.end - tolerance;
    });
    if (!isInWord) {
        return cut;
    }
    std::optional<Frames> best;
    for (const Word& word : words) {
        const Frames end = utteranceStart_ + framesIn(word.end);
        if (end >= earliest && end <= latest && (!best || levelAround(end) < levelAround(*best))) {
            best = end;
        }
    }
    return best.value_or(cut);
}

Utterance UtteranceRecognizer::utteranceOf(std::vector<Word> words) const {
    Utterance utterance;
    utterance.start = timeOf(utteranceStart_);
    utterance.duration = position() - utterance.start;
    utterance.isFinal = true;
    utterance.isContinuation = isContinuation_;
    utterance.words = std::move(words);
    for (Word& word : utterance.words) {
        word.start = std::min(word.start + utterance.start, position());
        word.end = std::min(word.end + utterance.start, position());
    }
    return utterance;
}

void UtteranceRecognizer::reportInterim() {
    decoder_.refresh();
    Utterance utterance = utteranceOf(decoder_.hypothesis().words);
    if (!utterance.words.empty()) {
        releaseHeld(false);
    }
    std::vector<std::string> texts = textsOf(utterance.words);
    if (options_.interimResults && texts != lastInterim_) {
        utterance.isFinal = false;
        utterance.isContinuation = isContinuation_;
        report(utterance);
        lastInterim_ = std::move(texts);
    }
}

void UtteranceRecognizer::report(const Utterance& utterance) {
    if (utterance.isFinal) {
        lastInterim_.clear();
    }
    if (!utterance.words.empty()) {
        lastWordEnd_ = utterance.words.back().end;
    }
    handlers_.onUtterance(utterance);
}

void UtteranceRecognizer::releaseHeld(bool isSentenceEnd, bool isFromFinalize) {
    if (!held_) {
        return;
    }
    Utterance utterance = *std::move(held_);
    held_.reset();
    utterance.isSentenceEnd = isSentenceEnd;
    utterance.isSpeechFinal = isSentenceEnd && (options_.endpointing || isFromFinalize);
    utterance.isFromFinalize = isFromFinalize;
    isContinuation_ = !isSentenceEnd;
    report(utterance);
}

void UtteranceRecognizer::checkHeld() {
    if (held_ && detector_.pause() >= sentencePause_) {
        releaseHeld(true);
    }
}

void UtteranceRecognizer::checkUtteranceEnd() {
    if (!options_.utteranceEnd || !lastWordEnd_ || isInSpeech_) {
        return;
    }
    // Words that are held back may follow the last reported one.
    const Seconds lastWordEnd = held_ ? held_->words.back().end : *lastWordEnd_;
    if (position() - lastWordEnd < *options_.utteranceEnd) {
        return;
    }
    releaseHeld(true);
    handlers_.onUtteranceEnd(*lastWordEnd_);
    lastWordEnd_.reset();
}

void UtteranceRecognizer::finish() {
    if (isInSpeech_) {
        decoder_.process(rest_);
        Utterance utterance = utteranceOf(endDecoding());
        utterance.isSpeechFinal = true;
        utterance.isFromFinalize = true;
        hold(std::move(utterance));
        isInSpeech_ = false;
        lastEnd_ = frames_;
    }
    rest_.clear();
    releaseHeld(true, true);
    isContinuation_ = false;
}

std::vector<Utterance> UtteranceRecognizer::unfinished() const {
    std::vector<Utterance> utterances;
    if (held_) {
        utterances.push_back(*held_);
    }
    if (isInSpeech_) {
        Hypothesis hypothesis = decoder_.hypothesis();
        Utterance utterance = utteranceOf(std::move(hypothesis.words));
        utterance.duration = hypothesis.covered;
        if (!utterance.words.empty()) {
            utterance.isContinuation = isContinuation_ || held_;
            utterances.push_back(std::move(utterance));
        }
    }
    if (!utterances.empty()) {
        utterances.back().isSentenceEnd = true;
        utterances.back().isSpeechFinal = true;
        utterances.back().isFromFinalize = true;
    }
    return utterances;
}

void UtteranceRecognizer::forgetAudioBefore(Frames frame) {
    const auto frames = static_cast<std::ptrdiff_t>(frame - audioStart_);
    audio_.erase(audio_.begin(), audio_.begin() + frames * static_cast<std::ptrdiff_t>(frameSize));
    levels_.erase(levels_.begin(), levels_.begin() + frames);
    audioStart_ = frame;
}

}  // namespace tarvik::service
