// SPDX-License-Identifier: MIT

#import "platform/macos/audio/AvAudioEngine.h"

#import <Foundation/Foundation.h>
#import <dispatch/dispatch.h>

#include <utility>

#include "platform/macos/Conversions.h"
#import "platform/macos/Strings.h"

namespace tarvik::macdesktop {

namespace {

constexpr Seconds retirement(2);

platform::AudioFormat shape(AVAudioFormat* format) {
    return {format.sampleRate, format.channelCount};
}

// On the engine's delivery thread, which may never drain an autorelease pool of its own.
void deliver(TapGate& gate, AVAudioPCMBuffer* buffer) {
    @autoreleasepool {
        gate.deliver({buffer.floatChannelData, buffer.frameLength, shape(buffer.format)});
    }
}

// Sends messages to the engine. The engine throws instead of reporting an error when there is no
// microphone, or when the microphone has changed since the message before, as while headphones
// connect.
template <typename Messages>
std::optional<Error> guarded(Messages messages) {
    @try {
        messages();
        return std::nullopt;
    } @catch (NSException* exception) {
        return errorInOneLine(0, utf8(exception.reason));
    }
}

}  // namespace

AvAudioEngine::AvAudioEngine(std::shared_ptr<ConfigurationChanges> changes)
    : changes_(std::move(changes)) {
    makeEngine();
}

AvAudioEngine::~AvAudioEngine() {
    if (gate_) {
        gate_->close();
    }
    retireEngine();
}

void AvAudioEngine::makeEngine() {
    engine_ = [[AVAudioEngine alloc] init];
    changes_->add((__bridge const void*)engine_, [this] { return engine_.running; });
}

void AvAudioEngine::retireEngine() {
    changes_->remove((__bridge const void*)engine_);
    stop();
    AVAudioEngine* retired = std::exchange(engine_, nil);
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, nanoseconds(retirement)),
                   dispatch_get_main_queue(), ^{
                     static_cast<void>(retired);
                   });
}

void AvAudioEngine::prepare() {
    if (!pendingError_) {
        pendingError_ = guarded([this] { [engine_ prepare]; });
    }
}

std::optional<Error> AvAudioEngine::start() {
    const std::optional<Error> error = pendingError_ ? pendingError_ : startEngine();
    if (error) {
        changes_->fail((__bridge const void*)engine_);
    } else {
        beginActivity();
    }
    return error;
}

std::optional<Error> AvAudioEngine::startEngine() {
    std::optional<Error> reported;
    const std::optional<Error> thrown = guarded([&] {
        NSError* error = nil;
        if (![engine_ startAndReturnError:&error]) {
            reported = errorFrom(error);
        }
    });
    return thrown ? thrown : reported;
}

void AvAudioEngine::stop() {
    // An engine that throws here does not run any more, so it has stopped.
    static_cast<void>(guarded([this] { [engine_ stop]; }));
    endActivity();
}

platform::AudioFormat AvAudioEngine::inputFormatForBus(std::uint32_t bus) {
    if (!gate_ && changes_->isStale((__bridge const void*)engine_)) {
        retireEngine();
        makeEngine();
    }
    inputFormat_ = nil;
    // An exception means that there is no microphone, as a format of 0 Hz does.
    static_cast<void>(guarded([&] { inputFormat_ = [engine_.inputNode inputFormatForBus:bus]; }));
    const platform::AudioFormat format = shape(inputFormat_);
    if (!(format.sampleRate > 0)) {
        changes_->fail((__bridge const void*)engine_);
    }
    return format;
}

void AvAudioEngine::installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                    const platform::AudioFormat& /*format*/,
                                    platform::AudioTapBlock block) {
    const auto gate = std::make_shared<TapGate>(std::move(block));
    pendingError_ = guarded([&] {
        AVAudioInputNode* node = engine_.inputNode;
        [node installTapOnBus:bus
                   bufferSize:bufferSize
                       format:inputFormat_
                        block:^(AVAudioPCMBuffer* buffer, AVAudioTime*) {
                          deliver(*gate, buffer);
                        }];
        tappedNode_ = node;
        gate_ = gate;
    });
}

void AvAudioEngine::removeTapOnBus(std::uint32_t bus) {
    if (const std::shared_ptr<TapGate> gate = std::exchange(gate_, nullptr)) {
        // A tap that cannot be removed delivers to a closed gate.
        static_cast<void>(guarded([&] { [tappedNode_ removeTapOnBus:bus]; }));
        tappedNode_ = nil;
        gate->close();
    }
}

void AvAudioEngine::beginActivity() {
    if (activity_ == nil) {
        activity_ = [NSProcessInfo.processInfo
            beginActivityWithOptions:NSActivityUserInitiatedAllowingIdleSystemSleep
                              reason:@"Dictation"];
    }
}

void AvAudioEngine::endActivity() {
    if (activity_ != nil) {
        [NSProcessInfo.processInfo endActivity:activity_];
        activity_ = nil;
    }
}

}  // namespace tarvik::macdesktop
