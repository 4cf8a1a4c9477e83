// SPDX-License-Identifier: MIT

#include <pocketsphinx/pocketsphinx.h>
#include <sphinxbase/err.h>

#include <algorithm>
#include <string>
#include <vector>

#include "speech-service/PocketSphinx.h"

namespace tarvik::service {

namespace {

struct ConfigurationDeleter {
    void operator()(cmd_ln_t* configuration) const { cmd_ln_free_r(configuration); }
};
struct DecoderDeleter {
    void operator()(ps_decoder_t* decoder) const { ps_free(decoder); }
};

std::unique_ptr<cmd_ln_t, ConfigurationDeleter> configuration(const SpeechModel& model) {
    const std::string weight = std::to_string(PocketSphinx::laterPassesWeight);
    // The service has a speech detector of its own.
    return std::unique_ptr<cmd_ln_t, ConfigurationDeleter>(cmd_ln_init(
        nullptr, ps_args(), TRUE, "-hmm", model.acoustics.c_str(), "-lm", model.language.c_str(),
        "-dict", model.dictionary.c_str(), "-fwdflatlw", weight.c_str(), "-bestpathlw",
        weight.c_str(), "-remove_silence", "no", nullptr));
}

class PocketSphinx5Prealpha final : public PocketSphinx {
  public:
    explicit PocketSphinx5Prealpha(ps_decoder_t* decoder) : decoder_(decoder) {
        const feat_t* features = ps_get_feat(decoder);
        initialMeans_.resize(static_cast<std::size_t>(features->cmn_struct->veclen));
        cmn_live_get(features->cmn_struct, initialMeans_.data());
    }

    ps_decoder_t* decoder() const override { return decoder_.get(); }

    void startStream() override {
        cmn_t* normalization = ps_get_feat(decoder_.get())->cmn_struct;
        std::copy(initialMeans_.begin(), initialMeans_.end(), normalization->cmn_mean);
        std::fill_n(normalization->sum, normalization->veclen, 0.0F);
        normalization->nframe = 0;
        ps_start_stream(decoder_.get());
    }

  private:
    std::unique_ptr<ps_decoder_t, DecoderDeleter> decoder_;
    std::vector<float> initialMeans_;
};

}  // namespace

std::unique_ptr<PocketSphinx> PocketSphinx::load(const SpeechModel& model) {
    // With a log file, which is per thread, the library prints every setting of a decoder.
    err_set_logfp(nullptr);
    const auto settings = configuration(model);
    ps_decoder_t* decoder = settings ? ps_init(settings.get()) : nullptr;
    return decoder ? std::make_unique<PocketSphinx5Prealpha>(decoder) : nullptr;
}

}  // namespace tarvik::service
