#include "platform/linux/audio/ConfigurationChanges.h"

#include <utility>
#include <vector>

namespace tarvik::linuxdesktop {

namespace {

constexpr Seconds burst{0.1};

}  // namespace

class ConfigurationChanges::Observation : public platform::AudioObservation {
  public:
    Observation(std::weak_ptr<ConfigurationChanges> changes, std::uint64_t observer)
        : changes_(std::move(changes)), observer_(observer) {}
    ~Observation() override {
        if (const auto changes = changes_.lock()) {
            changes->observers_.erase(observer_);
        }
    }

  private:
    std::weak_ptr<ConfigurationChanges> changes_;
    std::uint64_t observer_;
};

void ConfigurationChanges::report() {
    if (pending_.exchange(true)) {
        return;
    }
    mainQueue_.asyncAfter(burst, [weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) {
            self->pending_ = false;
            self->callObservers();
        }
    });
}

std::unique_ptr<platform::AudioObservation> ConfigurationChanges::observe(
    std::function<void()> handler) {
    const std::uint64_t observer = nextObserver_++;
    observers_.emplace(observer, std::move(handler));
    return std::make_unique<Observation>(weak_from_this(), observer);
}

void ConfigurationChanges::callObservers() {
    std::vector<std::uint64_t> present;
    for (const auto& [observer, handler] : observers_) {
        present.push_back(observer);
    }
    for (const std::uint64_t observer : present) {
        // A handler may drop any observation, its own included.
        if (const auto found = observers_.find(observer); found != observers_.end()) {
            const auto handler = found->second;
            handler();
        }
    }
}

}  // namespace tarvik::linuxdesktop
