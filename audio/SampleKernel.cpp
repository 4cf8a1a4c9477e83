// SPDX-License-Identifier: MIT

#include "audio/SampleKernel.h"

#include <bit>
#include <cstring>

// Highway's macros below compile this file once for every vector unit.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "audio/SampleKernel.cpp"
#include <hwy/foreach_target.h>
// Must follow foreach_target.h, which selects the target that this header declares.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace tarvik::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// How the sum over the channels becomes the mean.
enum class Averaging {
    // One channel: the sum is the mean.
    none,
    // A power of two: the reciprocal is exact, so the product is exact too.
    multiply,
    // Any other count. With 0 channels, 0 / 0 is not a number.
    divide
};

template <Averaging averaging, typename Tag>
void convertVector(Tag tag, const float* const* channels, std::uint32_t channelCount,
                   std::size_t first, char* bytes) {
    const auto one = hn::Set(tag, 1.0F);
    const auto minusOne = hn::Set(tag, -1.0F);
    auto mean = hn::Zero(tag);
    if constexpr (averaging == Averaging::none) {
        mean = hn::LoadU(tag, channels[0] + first);
    } else {
        for (std::uint32_t channel = 0; channel < channelCount; ++channel) {
            mean = hn::Add(mean, hn::LoadU(tag, channels[channel] + first));
        }
    }
    if constexpr (averaging == Averaging::multiply) {
        mean = hn::Mul(mean, hn::Set(tag, 1.0F / static_cast<float>(channelCount)));
    } else if constexpr (averaging == Averaging::divide) {
        mean = hn::Div(mean, hn::Set(tag, static_cast<float>(channelCount)));
    }
    // Not-a-number becomes full scale. On x86, Min() with not-a-number returns its second argument.
#if HWY_ARCH_X86
    const auto upperClamped = hn::Min(mean, one);
#else
    const auto upperClamped = hn::IfThenElse(hn::Lt(mean, one), mean, one);
#endif
    const auto scaled = hn::Mul(hn::Max(upperClamped, minusOne), hn::Set(tag, 32767.0F));
    // The sum of this constant and an integer up to 2^22 has that integer in its low bits.
    // Highway's own conversion also handles numbers out of range, which cannot occur here, and
    // takes twice as long.
    const auto shift = hn::Set(tag, 0x1.8p23F);
    const hn::RebindToSigned<Tag> whole;
    const auto integers =
        hn::Sub(hn::BitCast(whole, hn::Add(hn::Trunc(scaled), shift)), hn::BitCast(whole, shift));
    const hn::Rebind<std::int16_t, Tag> narrow;
    const auto samples = hn::DemoteTo(narrow, integers);
    // An array of the right type lets the chunk be plain bytes. The compiler removes the copy.
    HWY_ALIGN std::int16_t lanes[hn::MaxLanes(narrow)];
    hn::Store(samples, narrow, lanes);
    std::memcpy(bytes + first * sizeof(std::int16_t), lanes,
                hn::Lanes(narrow) * sizeof(std::int16_t));
}

template <Averaging averaging>
void convertFrames(const float* const* channels, std::uint32_t channelCount, std::size_t frames,
                   char* bytes) {
    const hn::ScalableTag<float> wide;
    const hn::CappedTag<float, 1> single;
    const std::size_t lanes = hn::Lanes(wide);
    std::size_t first = 0;
    if constexpr (averaging == Averaging::none) {
        // Unrolled: one vector is so little work that the loop overhead is noticeable.
        for (; first + 2 * lanes <= frames; first += 2 * lanes) {
            convertVector<averaging>(wide, channels, channelCount, first, bytes);
            convertVector<averaging>(wide, channels, channelCount, first + lanes, bytes);
        }
    }
    for (; first + lanes <= frames; first += lanes) {
        convertVector<averaging>(wide, channels, channelCount, first, bytes);
    }
    for (; first < frames; ++first) {
        convertVector<averaging>(single, channels, channelCount, first, bytes);
    }
}

void averageToInt16(const float* const* channels, std::uint32_t channelCount, std::size_t frames,
                    char* bytes) {
    if (channelCount == 1) {
        convertFrames<Averaging::none>(channels, channelCount, frames, bytes);
    } else if (std::has_single_bit(channelCount)) {
        convertFrames<Averaging::multiply>(channels, channelCount, frames, bytes);
    } else {
        convertFrames<Averaging::divide>(channels, channelCount, frames, bytes);
    }
}

}  // namespace tarvik::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace tarvik {

HWY_EXPORT(averageToInt16);

void averageToInt16(const float* const* channels, std::uint32_t channelCount, std::size_t frames,
                    char* bytes) {
    HWY_DYNAMIC_DISPATCH(averageToInt16)(channels, channelCount, frames, bytes);
}

}  // namespace tarvik
#endif
