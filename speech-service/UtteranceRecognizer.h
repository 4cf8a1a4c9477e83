// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "speech-service/Decoder.h"
#include "speech-service/RecognitionOptions.h"
#include "speech-service/SpeechDetector.h"
#include "speech-service/Utterance.h"

namespace tarvik::service {

/// Splits one stream of audio into utterances and decodes them during the speech.
///
/// A pause of half a second ends an utterance. Its words are held back until the pause is as long
/// as the options say, or until words follow: that decides whether a sentence ends there. Speech
/// without a pause is cut between two words, where the sound is quietest between 10 and 14 s; the
/// rest belongs to the next utterance.
///
/// One thread at a time. The handlers are called on that thread, inside process() and finish().
class UtteranceRecognizer {
  public:
    struct Handlers {
        std::function<void(const Utterance&)> onUtterance;
        /// Called with what unfinished() returns before a decoding that may take long.
        std::function<void(const std::vector<Utterance>&)> onSettling = [](const auto&) {};
        /// Speech has begun at this time, if the options ask for speech events.
        std::function<void(Seconds)> onSpeechStarted = [](Seconds) {};
        /// No word came for the time that the options give. The argument is the last word's end.
        std::function<void(Seconds)> onUtteranceEnd = [](Seconds) {};
    };

    /// `decoder` must outlive the recognizer and is ready for another stream after it.
    UtteranceRecognizer(Decoder& decoder, const RecognitionOptions& options, Handlers handlers);
    ~UtteranceRecognizer();
    UtteranceRecognizer(const UtteranceRecognizer&) = delete;
    UtteranceRecognizer& operator=(const UtteranceRecognizer&) = delete;

    /// Decodes audio at recognitionRate. Reports changed interim words every 0.5 s.
    void process(std::span<const std::int16_t> samples);

    /// Reports the speech since the last final utterance, if any, as a final utterance. More audio
    /// may follow.
    void finish();

    /// The utterances that finish() would report, without the passes that finish() takes. The words
    /// are those of the decoder's newest hypothesis.
    std::vector<Utterance> unfinished() const;

    /// The length of the audio so far.
    Seconds position() const { return timeOf(frames_); }

  private:
    using Frames = std::size_t;

    static Seconds timeOf(Frames frames);
    void processFrame(std::span<const std::int16_t, SpeechDetector::frameSize> frame);
    void startSpeech();
    void continueSpeech();
    void beginUtterance(Frames start);
    void feedFrom(Frames start);
    void settlePause();
    void hold(Utterance utterance);
    void cut(Frames earliest, Frames latest);
    std::vector<Word> endDecoding();
    Frames quietest(Frames earliest, Frames latest) const;
    Frames betweenWords(const std::vector<Word>& words, Frames cut, Frames earliest,
                        Frames latest) const;
    double levelAround(Frames frame) const;
    Utterance utteranceOf(std::vector<Word> words) const;
    void reportInterim();
    void report(const Utterance& utterance);
    void releaseHeld(bool isSentenceEnd, bool isFromFinalize = false);
    void checkHeld();
    void checkUtteranceEnd();
    void forgetAudioBefore(Frames frame);

    Decoder& decoder_;
    const RecognitionOptions options_;
    const Seconds sentencePause_;
    const Seconds settlePause_;
    const Handlers handlers_;
    SpeechDetector detector_;
    /// Samples that do not fill a frame yet.
    std::vector<std::int16_t> rest_;
    /// The sound of the utterance, or the last second outside of speech, and its levels.
    std::vector<std::int16_t> audio_;
    std::vector<double> levels_;
    Frames audioStart_ = 0;
    /// The length of the audio so far.
    Frames frames_ = 0;
    Frames utteranceStart_ = 0;
    Frames lastEnd_ = 0;
    Frames lastCheck_ = 0;
    bool isInSpeech_ = false;
    bool isContinuation_ = false;
    /// The settled utterance before the end of its pause.
    std::optional<Utterance> held_;
    std::vector<std::string> lastInterim_;
    /// The end of the last word that no onUtteranceEnd has followed.
    std::optional<Seconds> lastWordEnd_;
};

}  // namespace tarvik::service
