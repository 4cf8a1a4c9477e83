#include "audio/SampleKernel.h"

#include <bit>
#include <cstring>

// This file is compiled once for every vector unit; the macros are how Highway does that.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "audio/SampleKernel.cpp"
#include <hwy/foreach_target.h>
// After the header above, which decides what this one declares.
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace tarvik::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// What the sum over the channels still needs to become their mean.
enum class Averaging {
    // One channel: nothing.
    none,
    // A power of two: its reciprocal is exact, and so is the product.
    multiply,
    // Any other count; for 0 channels it gives 0 / 0, which is not a number.
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
    // What is not a number counts as full scale: on x86 the lesser of it and another is the second.
#if HWY_ARCH_X86
    const auto upperClamped = hn::Min(mean, one);
#else
    const auto upperClamped = hn::IfThenElse(hn::Lt(mean, one), mean, one);
#endif
    const auto scaled = hn::Mul(hn::Max(upperClamped, minusOne), hn::Set(tag, 32767.0F));
    // A whole number up to 2^22 stands in the low bits of its sum with this. Highway's own
    // conversion guards against numbers out of range, which there are none here, and takes twice as
    // long.
    const auto shift = hn::Set(tag, 0x1.8p23F);
    const hn::RebindToSigned<Tag> whole;
    const auto integers =
        hn::Sub(hn::BitCast(whole, hn::Add(hn::Trunc(scaled), shift)), hn::BitCast(whole, shift));
    const hn::Rebind<std::int16_t, Tag> narrow;
    const auto samples = hn::DemoteTo(narrow, integers);
    // Through memory of the right type, so that the chunk may be plain bytes; no copy is left of
    // it.
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
        // So little is done for one vector that the loop itself counts.
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
