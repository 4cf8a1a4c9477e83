#import "platform/macos/EngineAudioService.h"

#import <AVFAudio/AVFAudio.h>

#include <utility>

#import "platform/macos/AvAudioEngine.h"
#include "platform/macos/PendingCall.h"

using tarvik::macdesktop::PendingCall;

@interface TarvikConfigurationObserver : NSObject
- (instancetype)initWithCall:(std::shared_ptr<PendingCall>)call;
- (void)handleConfigurationChange:(NSNotification*)notification;
@end

@implementation TarvikConfigurationObserver {
    std::shared_ptr<PendingCall> _call;
}

- (instancetype)initWithCall:(std::shared_ptr<PendingCall>)call {
    if ((self = [super init])) {
        _call = std::move(call);
    }
    return self;
}

// On a thread of the engine's choosing.
- (void)handleConfigurationChange:(NSNotification*)notification {
    PendingCall::request(_call);
}

@end

namespace tarvik::macdesktop {

namespace {

// The notification centre holds the observer weakly, this holds it strongly.
class ConfigurationObservation final : public platform::AudioObservation {
  public:
    explicit ConfigurationObservation(std::shared_ptr<PendingCall> call)
        : call_(std::move(call)),
          observer_([[TarvikConfigurationObserver alloc] initWithCall:call_]) {
        [NSNotificationCenter.defaultCenter addObserver:observer_
                                               selector:@selector(handleConfigurationChange:)
                                                   name:AVAudioEngineConfigurationChangeNotification
                                                 object:nil];
    }

    ~ConfigurationObservation() override {
        [NSNotificationCenter.defaultCenter removeObserver:observer_];
        call_->cancel();
    }

  private:
    std::shared_ptr<PendingCall> call_;
    TarvikConfigurationObserver* observer_;
};

}  // namespace

std::unique_ptr<platform::AudioEngine> EngineAudioService::makeEngine() {
    return std::make_unique<AvAudioEngine>();
}

std::unique_ptr<platform::AudioObservation> EngineAudioService::observeConfigurationChange(
    std::function<void()> handler) {
    return std::make_unique<ConfigurationObservation>(
        std::make_shared<PendingCall>(mainQueue_, std::move(handler)));
}

}  // namespace tarvik::macdesktop
