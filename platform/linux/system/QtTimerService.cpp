// SPDX-License-Identifier: MIT

#include "platform/linux/system/QtTimerService.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "platform/linux/loop/Alarm.h"

namespace tarvik::linuxdesktop {

namespace {

// An interval of zero would keep the loop busy for good.
constexpr Seconds minInterval(0.001);

// Stays alive while its block runs, also when the block drops the timer.
class Ticker : public std::enable_shared_from_this<Ticker> {
  public:
    Ticker(const platform::Clock& clock, Seconds interval, std::function<void()> block)
        : clock_(clock),
          interval_(std::max(interval, minInterval)),
          block_(std::move(block)),
          next_(clock.now() + interval_),
          alarm_([this] { tick(); }) {
        alarm_.set(next_);
    }

    void invalidate() {
        isValid_ = false;
        alarm_.clear();
    }

  private:
    void tick() {
        if (clock_.now() < next_) {
            return;
        }
        const std::shared_ptr<Ticker> self = shared_from_this();
        alarm_.clear();
        block_();
        if (isValid_) {
            next_ += interval_ * (std::floor((clock_.now() - next_) / interval_) + 1);
            alarm_.set(next_);
        }
    }

    const platform::Clock& clock_;
    Seconds interval_;
    std::function<void()> block_;
    TimePoint next_;
    bool isValid_ = true;
    Alarm alarm_;
};

class RunningTimer final : public platform::Timer {
  public:
    explicit RunningTimer(std::shared_ptr<Ticker> ticker) : ticker_(std::move(ticker)) {}
    ~RunningTimer() override { ticker_->invalidate(); }

    void invalidate() override { ticker_->invalidate(); }

  private:
    std::shared_ptr<Ticker> ticker_;
};

}  // namespace

std::unique_ptr<platform::Timer> QtTimerService::scheduledRepeatingTimer(
    Seconds interval, std::function<void()> block) {
    return std::make_unique<RunningTimer>(
        std::make_shared<Ticker>(clock_, interval, std::move(block)));
}

}  // namespace tarvik::linuxdesktop
