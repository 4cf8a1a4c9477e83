#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "platform/Clock.h"
#include "platform/MainQueue.h"
#include "platform/linux/loop/Alarm.h"

namespace tarvik::linuxdesktop {

/// The main queue on Qt's event loop. Made and destroyed on the main thread, which has its
/// QCoreApplication by then; the loop need not run yet.
///
/// Blocks run in the order of the moments for which they were submitted, those of one moment in the
/// order of submission; also in the nested loop of a modal alert or a menu. One turn of the loop
/// runs what was due when it began, so blocks that submit blocks do not starve other events.
class QtMainQueue final : public platform::MainQueue {
  public:
    /// `clock` outlives the queue.
    explicit QtMainQueue(const platform::Clock& clock);
    ~QtMainQueue() override;

    void async(std::function<void()> block) override;
    void asyncAfter(Seconds delay, std::function<void()> block) override;

    /// Destroys the blocks that wait, without running them. Main thread.
    void discardBlocks();

  private:
    using Key = std::pair<TimePoint, std::uint64_t>;

    void runTurn();
    std::function<void()> takeNext(const Key& limit);
    void setAlarm();

    const platform::Clock& clock_;
    std::mutex mutex_;
    std::map<Key, std::function<void()>> blocks_;
    std::uint64_t submissions_ = 0;
    Alarm alarm_;
};

}  // namespace tarvik::linuxdesktop
