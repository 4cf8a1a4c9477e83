// SPDX-License-Identifier: MIT

#include <pocketsphinx.h>
#include <pocketsphinx/err.h>

#include <string>

#include "speech-service/PocketSphinx.h"

namespace tarvik::service {

namespace {

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
using Configuration = std::unique_ptr<ps_config_t, ConfigurationDeleter>;

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

class PocketSphinx5 final : public PocketSphinx {
  public:
    explicit PocketSphinx5(ps_decoder_t* decoder)
        : decoder_(decoder), initialMeans_(ps_get_cmn(decoder, FALSE)) {}

    ps_decoder_t* decoder() const override { return decoder_.get(); }

    void startStream() override {
        ps_set_cmn(decoder_.get(), initialMeans_.c_str());
        ps_start_stream(decoder_.get());
    }

  private:
    std::unique_ptr<ps_decoder_t, DecoderDeleter> decoder_;
    std::string initialMeans_;
};

}  // namespace

std::unique_ptr<PocketSphinx> PocketSphinx::load(const SpeechModel& model) {
    const Configuration settings = configuration(model);
    ps_decoder_t* decoder = ps_init(settings.get());
    return decoder ? std::make_unique<PocketSphinx5>(decoder) : nullptr;
}

}  // namespace tarvik::service
