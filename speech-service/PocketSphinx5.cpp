// SPDX-License-Identifier: MIT

#include <pocketsphinx.h>
#include <pocketsphinx/err.h>
#include <pocketsphinx/vad.h>

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "speech-service/PocketSphinx.h"
#include "speech-service/Resampler.h"

namespace tarvik::service {

namespace {

// In frames of 10 ms.
constexpr int minVoice = 10;
constexpr int maxPause = 50;
constexpr std::size_t framesBeforeDetection = 20;
constexpr double frameLength = 0.01;

// What the models of earlier releases take the sound of a voice for until they have heard some. The
// models of this release say nothing about it, and the library's guess costs the first words.
constexpr const char* usualMeans =
    "41.00,-5.29,-0.12,5.09,2.48,-4.07,-1.37,-1.78,-5.08,-2.05,-6.45,-1.42,1.17";

struct ConfigurationDeleter {
    void operator()(ps_config_t* configuration) const { ps_config_free(configuration); }
};
struct DecoderDeleter {
    void operator()(ps_decoder_t* decoder) const { ps_free(decoder); }
};
struct VoiceDetectorDeleter {
    void operator()(ps_vad_t* detector) const { ps_vad_free(detector); }
};
using Configuration = std::unique_ptr<ps_config_t, ConfigurationDeleter>;
using VoiceDetector = std::unique_ptr<ps_vad_t, VoiceDetectorDeleter>;

Configuration configuration(const SpeechModel& model) {
    Configuration configuration(ps_config_init(nullptr));
    ps_config_set_str(configuration.get(), "hmm", model.acoustics.c_str());
    ps_config_set_str(configuration.get(), "lm", model.language.c_str());
    ps_config_set_str(configuration.get(), "dict", model.dictionary.c_str());
    ps_config_set_str(configuration.get(), "cmninit", usualMeans);
    ps_config_set_float(configuration.get(), "fwdflatlw", PocketSphinx::laterPassesWeight);
    ps_config_set_float(configuration.get(), "bestpathlw", PocketSphinx::laterPassesWeight);
    return configuration;
}

// The strictest mode keeps microphone hiss from counting as speech.
VoiceDetector voiceDetector() {
    return VoiceDetector(ps_vad_init(PS_VAD_STRICT, recognitionRate, frameLength));
}

// The library tells voice from other sound, frame by frame. Where speech begins and ends is decided
// here, and only speech is decoded.
class PocketSphinx5 final : public PocketSphinx {
  public:
    PocketSphinx5(ps_decoder_t* decoder, VoiceDetector voiceDetector)
        : decoder_(decoder),
          voiceDetector_(std::move(voiceDetector)),
          initialMeans_(ps_get_cmn(decoder, FALSE)) {}

    ps_decoder_t* decoder() const override { return decoder_.get(); }

    void startStream() override {
        ps_set_cmn(decoder_.get(), initialMeans_.c_str());
        ps_start_stream(decoder_.get());
        voiceDetector_ = voiceDetector();
        incomplete_.clear();
        beforeDetection_.clear();
    }

    void startUtterance() override {
        isInSpeech_ = false;
        voiceFrames_ = 0;
        ps_start_utt(decoder_.get());
    }

    void process(std::span<const std::int16_t> samples) override {
        const std::size_t frameSize = ps_vad_frame_size(voiceDetector_.get());
        incomplete_.insert(incomplete_.end(), samples.begin(), samples.end());
        std::span<const std::int16_t> rest(incomplete_);
        for (; rest.size() >= frameSize; rest = rest.subspan(frameSize)) {
            processFrame(rest.first(frameSize));
        }
        incomplete_.erase(incomplete_.begin(), incomplete_.end() - std::ssize(rest));
    }

    bool isInSpeech() const override { return isInSpeech_; }

    void endUtterance() override { ps_end_utt(decoder_.get()); }

  private:
    using Frame = std::vector<std::int16_t>;

    void processFrame(std::span<const std::int16_t> frame) {
        const bool isVoice = ps_vad_classify(voiceDetector_.get(), frame.data()) == PS_VAD_SPEECH;
        if (isInSpeech_) {
            decode(frame);
            pauseFrames_ = isVoice ? 0 : pauseFrames_ + 1;
            isInSpeech_ = pauseFrames_ < maxPause;
            return;
        }
        if (beforeDetection_.size() == framesBeforeDetection) {
            beforeDetection_.pop_front();
        }
        beforeDetection_.emplace_back(frame.begin(), frame.end());
        voiceFrames_ = isVoice ? voiceFrames_ + 1 : 0;
        if (voiceFrames_ == minVoice) {
            startSpeech();
        }
    }

    void startSpeech() {
        isInSpeech_ = true;
        voiceFrames_ = 0;
        pauseFrames_ = 0;
        for (const Frame& frame : beforeDetection_) {
            decode(frame);
        }
        beforeDetection_.clear();
    }

    void decode(std::span<const std::int16_t> frame) {
        ps_process_raw(decoder_.get(), frame.data(), frame.size(), FALSE, FALSE);
    }

    std::unique_ptr<ps_decoder_t, DecoderDeleter> decoder_;
    VoiceDetector voiceDetector_;
    std::string initialMeans_;
    /// The samples of the frame that is not complete yet.
    std::vector<std::int16_t> incomplete_;
    /// The last frames, while there is no speech.
    std::deque<Frame> beforeDetection_;
    int voiceFrames_ = 0;
    int pauseFrames_ = 0;
    bool isInSpeech_ = false;
};

}  // namespace

std::unique_ptr<PocketSphinx> PocketSphinx::load(const SpeechModel& model) {
    const Configuration settings = configuration(model);
    VoiceDetector detector = voiceDetector();
    ps_decoder_t* decoder = detector ? ps_init(settings.get()) : nullptr;
    return decoder ? std::make_unique<PocketSphinx5>(decoder, std::move(detector)) : nullptr;
}

}  // namespace tarvik::service
