#include "platform/macos/audio/ConfigurationChanges.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tarvik::macdesktop {

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

void ConfigurationChanges::add(Engine engine, std::function<bool()> isRunning) {
    engines_.insert_or_assign(engine, std::move(isRunning));
}

void ConfigurationChanges::remove(Engine engine) {
    engines_.erase(engine);
}

void ConfigurationChanges::report(Engine engine) {
    const std::lock_guard lock(mutex_);
    const bool isAnnounced = !reported_.empty();
    reported_.insert(engine);
    if (!isAnnounced) {
        mainQueue_.async([weakSelf = weak_from_this()] {
            if (const auto self = weakSelf.lock()) {
                self->judgeReports();
            }
        });
    }
}

std::unique_ptr<platform::AudioObservation> ConfigurationChanges::observe(
    std::function<void()> handler) {
    const std::uint64_t observer = nextObserver_++;
    observers_.emplace(observer, std::move(handler));
    return std::make_unique<Observation>(weak_from_this(), observer);
}

// On the main thread, and so after a start that was under way when its engine was reported.
void ConfigurationChanges::judgeReports() {
    std::set<Engine> reported;
    {
        const std::lock_guard lock(mutex_);
        reported.swap(reported_);
    }
    const bool hasStopped = std::any_of(reported.begin(), reported.end(), [this](Engine engine) {
        const auto found = engines_.find(engine);
        return found != engines_.end() && !found->second();
    });
    if (hasStopped) {
        callObservers();
    }
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

}  // namespace tarvik::macdesktop
