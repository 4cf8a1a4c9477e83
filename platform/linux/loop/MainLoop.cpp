// SPDX-License-Identifier: MIT

#include "platform/linux/loop/MainLoop.h"

#include <poll.h>

#include <QSocketNotifier>
#include <chrono>

namespace tarvik::linuxdesktop {

namespace {

class NotifierWatch final : public EventLoop::Watch {
  public:
    NotifierWatch(int descriptor, short events, const std::function<void()>& onReady)
        : readable_(descriptor, QSocketNotifier::Read),
          writable_(descriptor, QSocketNotifier::Write) {
        for (QSocketNotifier* notifier : {&readable_, &writable_}) {
            QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                             [onReady] { onReady(); });
        }
        setEvents(events);
    }

    void setEvents(short events) override {
        readable_.setEnabled((events & POLLIN) != 0);
        writable_.setEnabled((events & POLLOUT) != 0);
    }

  private:
    QSocketNotifier readable_;
    QSocketNotifier writable_;
};

}  // namespace

MainLoop::MainLoop(const platform::Clock& clock)
    : clock_(clock), alarm_([this] {
          runDeadlines();
          // An alarm that came early stays due until its time is set again.
          onDeadlinesChanged();
      }) {}

std::unique_ptr<EventLoop::Watch> MainLoop::watch(int descriptor, short events,
                                                  std::function<void()> onReady) {
    return std::make_unique<NotifierWatch>(descriptor, events, onReady);
}

void MainLoop::onDeadlinesChanged() {
    if (const auto next = nextDeadline()) {
        alarm_.set(clock_.now() + (*next - std::chrono::steady_clock::now()));
    } else {
        alarm_.clear();
    }
}

}  // namespace tarvik::linuxdesktop
