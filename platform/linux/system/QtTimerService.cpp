// SPDX-License-Identifier: MIT

#include "platform/linux/system/QtTimerService.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/loop/Alarm.h"

namespace tarvik::linuxdesktop {

namespace {

// An interval of zero would keep the loop busy for good.
constexpr Seconds minInterval(0.001);

}  // namespace

struct QtTimerService::Ticker {
    Seconds interval;
    std::function<void()> block;
    TimePoint next;
    bool isRunning = false;
    bool isValid = true;
};

class QtTimerService::Schedule {
  public:
    explicit Schedule(const platform::Clock& clock) : clock_(clock), alarm_([this] { run(); }) {}

    std::shared_ptr<Ticker> add(Seconds interval, std::function<void()> block) {
        interval = std::max(interval, minInterval);
        tickers_.push_back(
            std::make_shared<Ticker>(Ticker{interval, std::move(block), clock_.now() + interval}));
        setAlarm();
        return tickers_.back();
    }

    void invalidate(const std::shared_ptr<Ticker>& ticker) {
        ticker->isValid = false;
        std::erase(tickers_, ticker);
        setAlarm();
    }

  private:
    // Blocks may add and invalidate tickers, and their nested loops come here again.
    void run() {
        for (const std::shared_ptr<Ticker>& ticker : std::vector(tickers_)) {
            if (ticker->isValid && !ticker->isRunning && ticker->next <= clock_.now()) {
                tick(*ticker);
            }
        }
    }

    void tick(Ticker& ticker) {
        ticker.isRunning = true;
        setAlarm();
        ticker.block();
        ticker.isRunning = false;
        const double missed = std::floor((clock_.now() - ticker.next) / ticker.interval);
        ticker.next += ticker.interval * (missed + 1);
        setAlarm();
    }

    void setAlarm() {
        std::optional<TimePoint> earliest;
        for (const std::shared_ptr<Ticker>& ticker : tickers_) {
            if (!ticker->isRunning && (!earliest || ticker->next < *earliest)) {
                earliest = ticker->next;
            }
        }
        earliest ? alarm_.set(*earliest) : alarm_.clear();
    }

    const platform::Clock& clock_;
    std::vector<std::shared_ptr<Ticker>> tickers_;
    Alarm alarm_;
};

class QtTimerService::RunningTimer final : public platform::Timer {
  public:
    RunningTimer(std::shared_ptr<Schedule> schedule, std::shared_ptr<Ticker> ticker)
        : schedule_(std::move(schedule)), ticker_(std::move(ticker)) {}
    ~RunningTimer() override { schedule_->invalidate(ticker_); }

    void invalidate() override { schedule_->invalidate(ticker_); }

  private:
    const std::shared_ptr<Schedule> schedule_;
    const std::shared_ptr<Ticker> ticker_;
};

QtTimerService::QtTimerService(const platform::Clock& clock)
    : schedule_(std::make_shared<Schedule>(clock)) {}

std::unique_ptr<platform::Timer> QtTimerService::scheduledRepeatingTimer(
    Seconds interval, std::function<void()> block) {
    return std::make_unique<RunningTimer>(schedule_, schedule_->add(interval, std::move(block)));
}

}  // namespace tarvik::linuxdesktop
