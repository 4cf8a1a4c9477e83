// SPDX-License-Identifier: MIT

#include "tests/speech-service/WhisperModelFile.h"

#include <cstdint>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace tarvik::service {

namespace {

constexpr std::int32_t vocabulary = 51864;
constexpr std::int32_t plainTokens = 50256;
constexpr std::int32_t audioContext = 1500;
constexpr std::int32_t textContext = 448;
constexpr std::int32_t headWidth = 64;
constexpr std::int32_t mels = 80;
constexpr std::int32_t frequencies = 201;

class ModelWriter {
  public:
    ModelWriter(const std::filesystem::path& path, const WhisperSize& size)
        : file_(path, std::ios::binary), size_(size) {}

    void number(std::int32_t value) {
        file_.write(reinterpret_cast<const char*>(&value), sizeof value);
    }

    void text(const std::string& value) {
        number(static_cast<std::int32_t>(value.size()));
        file_ << value;
    }

    void floats(std::size_t count) {
        std::vector<float> values(count);
        for (float& value : values) {
            value = distribution_(generator_);
        }
        write(values);
    }

    /// Numbers of 16 bits from 0.03 to 0.06, of both signs.
    void halves(std::size_t count) {
        constexpr unsigned signAndFraction = 0x83FF;
        constexpr unsigned exponent = 0x2800;
        std::vector<std::uint16_t> values(count);
        for (std::uint16_t& value : values) {
            value = static_cast<std::uint16_t>((generator_() & signAndFraction) | exponent);
        }
        write(values);
    }

    void tensor(const std::string& name, const std::vector<std::int32_t>& sizes) {
        // The library wants only the matrices in 16 bits.
        const bool isHalf = size_.isHalfPrecision && sizes.size() > 1 && name.ends_with(".weight");
        number(static_cast<std::int32_t>(sizes.size()));
        number(static_cast<std::int32_t>(name.size()));
        number(isHalf ? 1 : 0);
        std::size_t count = 1;
        for (const std::int32_t size : sizes) {
            number(size);
            count *= static_cast<std::size_t>(size);
        }
        file_ << name;
        isHalf ? halves(count) : floats(count);
    }

    void layer(const std::string& name, std::int32_t inputs, std::int32_t outputs) {
        tensor(name + ".weight", {inputs, outputs});
        tensor(name + ".bias", {outputs});
    }

    void norm(const std::string& name) {
        tensor(name + ".weight", {size_.width});
        tensor(name + ".bias", {size_.width});
    }

    void attention(const std::string& name) {
        layer(name + ".query", size_.width, size_.width);
        tensor(name + ".key.weight", {size_.width, size_.width});
        layer(name + ".value", size_.width, size_.width);
        layer(name + ".out", size_.width, size_.width);
    }

    void block(const std::string& name, bool hasCrossAttention) {
        norm(name + ".mlp_ln");
        layer(name + ".mlp.0", size_.width, 4 * size_.width);
        layer(name + ".mlp.2", 4 * size_.width, size_.width);
        norm(name + ".attn_ln");
        attention(name + ".attn");
        if (hasCrossAttention) {
            norm(name + ".cross_attn_ln");
            attention(name + ".cross_attn");
        }
    }

  private:
    template <typename Value>
    void write(const std::vector<Value>& values) {
        file_.write(reinterpret_cast<const char*>(values.data()),
                    static_cast<std::streamsize>(values.size() * sizeof(Value)));
    }

    std::ofstream file_;
    WhisperSize size_;
    std::mt19937 generator_{1};
    std::normal_distribution<float> distribution_{0, 0.05F};
};

}  // namespace

void writeRandomWhisperModel(const std::filesystem::path& path, const WhisperSize& size) {
    const auto [width, layers, isHalfPrecision] = size;
    const std::int32_t heads = width / headWidth;
    ModelWriter model(path, size);
    model.number(0x67676d6c);
    for (const std::int32_t parameter :
         {vocabulary, audioContext, width, heads, layers, textContext, width, heads, layers, mels,
          isHalfPrecision ? 1 : 0}) {
        model.number(parameter);
    }
    model.number(mels);
    model.number(frequencies);
    model.floats(static_cast<std::size_t>(mels * frequencies));
    model.number(plainTokens);
    // The library looks the blank up in every vocabulary.
    model.text(" ");
    for (std::int32_t token = 1; token < plainTokens; ++token) {
        model.text(" w" + std::to_string(token));
    }
    model.tensor("encoder.positional_embedding", {width, audioContext});
    model.tensor("encoder.conv1.weight", {3, mels, width});
    model.tensor("encoder.conv1.bias", {1, width});
    model.tensor("encoder.conv2.weight", {3, width, width});
    model.tensor("encoder.conv2.bias", {1, width});
    model.norm("encoder.ln_post");
    model.tensor("decoder.positional_embedding", {width, textContext});
    model.tensor("decoder.token_embedding.weight", {width, vocabulary});
    model.norm("decoder.ln");
    for (std::int32_t layer = 0; layer < layers; ++layer) {
        model.block("encoder.blocks." + std::to_string(layer), false);
        model.block("decoder.blocks." + std::to_string(layer), true);
    }
}

}  // namespace tarvik::service
