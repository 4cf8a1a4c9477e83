#import "platform/macos/AvAudioEngine.h"

#include <utility>

#include "platform/macos/Conversions.h"
#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

namespace {

platform::AudioFormat shape(AVAudioFormat* format) {
    return {format.sampleRate, format.channelCount};
}

// On the engine's delivery thread, which may never empty a pool of its own; nothing here allocates.
void deliver(TapGate& gate, AVAudioPCMBuffer* buffer) {
    @autoreleasepool {
        gate.deliver({buffer.floatChannelData, buffer.frameLength, shape(buffer.format)});
    }
}

}  // namespace

AvAudioEngine::AvAudioEngine() : engine_([[AVAudioEngine alloc] init]) {}

AvAudioEngine::~AvAudioEngine() {
    if (gate_) {
        gate_->close();
    }
    stop();
}

void AvAudioEngine::prepare() {
    [engine_ prepare];
}

std::optional<Error> AvAudioEngine::start() {
    if (tapFailure_) {
        return tapFailure_;
    }
    NSError* error = nil;
    if ([engine_ startAndReturnError:&error]) {
        return std::nullopt;
    }
    return errorFrom(error);
}

void AvAudioEngine::stop() {
    [engine_ stop];
}

platform::AudioFormat AvAudioEngine::inputFormatForBus(std::uint32_t bus) {
    inputFormat_ = [engine_.inputNode inputFormatForBus:bus];
    return shape(inputFormat_);
}

// The engine throws when the microphone has changed since its format was read, as it does while
// headphones connect.
void AvAudioEngine::installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                    const platform::AudioFormat& /*format*/,
                                    platform::AudioTapBlock block) {
    const auto gate = std::make_shared<TapGate>(std::move(block));
    tapFailure_.reset();
    @try {
        [engine_.inputNode installTapOnBus:bus
                                bufferSize:bufferSize
                                    format:inputFormat_
                                     block:^(AVAudioPCMBuffer* buffer, AVAudioTime*) {
                                       deliver(*gate, buffer);
                                     }];
        gate_ = gate;
    } @catch (NSException* exception) {
        tapFailure_ = errorInOneLine(0, utf8(exception.reason));
    }
}

void AvAudioEngine::removeTapOnBus(std::uint32_t bus) {
    if (const std::shared_ptr<TapGate> gate = std::exchange(gate_, nullptr)) {
        [engine_.inputNode removeTapOnBus:bus];
        gate->close();
    }
}

}  // namespace tarvik::macdesktop
