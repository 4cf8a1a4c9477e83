// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "base/Time.h"

namespace tarvik::service {

/// Tells speech from silence and noise, frame by frame.
///
/// Speech begins with a voice: a periodic sound between 70 and 400 Hz that is louder than the
/// background. Hiss, clicks and rustling have no period and never begin speech. Once a voice was
/// heard, every sound above the background is speech, and so is what came right before the voice.
/// The background is the lowest level of the last seconds. One thread at a time.
class SpeechDetector {
  public:
    /// The samples of one frame: 10 ms at recognitionRate.
    static constexpr std::size_t frameSize = 160;
    static constexpr Seconds frameLength{0.01};

    SpeechDetector();

    void process(std::span<const std::int16_t, frameSize> frame);

    /// Whether speech has begun within the last 0.12 s.
    bool hasOnset() const;

    /// After an onset: how long before the end of the last frame the speech began, a short lead
    /// included.
    Seconds onsetAge() const;

    /// The time since the last frame of speech.
    Seconds pause() const;

    /// The level of the last frame in dB, where 0 is the loudest possible square wave.
    double level() const { return level_; }

    /// The level of the background.
    double background() const { return background_; }

  private:
    struct Filter {
        std::array<double, 3> numerator;
        std::array<double, 2> denominator;
        std::array<double, 2> state{};
        double operator()(double sample);
    };
    struct Frame {
        bool isLoud = false;
        bool isVoiced = false;
    };

    static constexpr std::size_t pitchRate = 4000;
    static constexpr std::size_t pitchWindow = pitchRate * 32 / 1000;
    static constexpr std::size_t minLag = pitchRate / 400;
    static constexpr std::size_t maxLag = pitchRate / 70;
    static constexpr std::size_t recentFrames = 64;

    void measure(std::span<const std::int16_t, frameSize> frame);
    void followBackground();
    double periodicity() const;
    /// The frame that came `age` frames before the last one.
    const Frame& frameAt(std::size_t age) const;

    Filter levelFilter_;
    std::array<Filter, 2> pitchFilters_;
    double lastSample_ = 0;
    double lastEnergy_ = 0;
    double level_;
    double background_;
    double smoothLevel_;
    std::array<double, 8> blockMinima_;
    std::size_t frames_ = 0;
    std::size_t lastSpeech_ = 0;
    std::size_t lastVoice_ = 0;
    std::array<Frame, recentFrames> recent_{};
    std::array<double, pitchWindow + maxLag> pitchSamples_{};
};

}  // namespace tarvik::service
