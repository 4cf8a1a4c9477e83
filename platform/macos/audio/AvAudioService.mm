// SPDX-License-Identifier: MIT

#import "platform/macos/audio/AvAudioService.h"

#import <AVFAudio/AVFAudio.h>

#include <utility>

#import "platform/macos/audio/AvAudioEngine.h"

using tarvik::macdesktop::ConfigurationChanges;

@interface TarvikConfigurationObserver : NSObject
- (instancetype)initWithChanges:(std::shared_ptr<ConfigurationChanges>)changes;
- (void)handleConfigurationChange:(NSNotification*)notification;
@end

@implementation TarvikConfigurationObserver {
    std::shared_ptr<ConfigurationChanges> _changes;
}

- (instancetype)initWithChanges:(std::shared_ptr<ConfigurationChanges>)changes {
    if ((self = [super init])) {
        _changes = std::move(changes);
    }
    return self;
}

// Called on any thread.
- (void)handleConfigurationChange:(NSNotification*)notification {
    _changes->report((__bridge const void*)notification.object);
}

@end

namespace tarvik::macdesktop {

AvAudioService::AvAudioService(platform::MainQueue& mainQueue)
    : changes_(std::make_shared<ConfigurationChanges>(mainQueue)),
      observer_([[TarvikConfigurationObserver alloc] initWithChanges:changes_]) {
    [NSNotificationCenter.defaultCenter addObserver:observer_
                                           selector:@selector(handleConfigurationChange:)
                                               name:AVAudioEngineConfigurationChangeNotification
                                             object:nil];
}

AvAudioService::~AvAudioService() {
    [NSNotificationCenter.defaultCenter removeObserver:observer_];
}

std::unique_ptr<platform::AudioEngine> AvAudioService::makeEngine() {
    return std::make_unique<AvAudioEngine>(changes_);
}

std::unique_ptr<platform::AudioObservation> AvAudioService::observeConfigurationChange(
    std::function<void()> handler) {
    return changes_->observe(std::move(handler));
}

}  // namespace tarvik::macdesktop
