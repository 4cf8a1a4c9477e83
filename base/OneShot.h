#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "base/AtomicReference.h"

namespace tarvik {

/// A completion that is delivered at most once, whichever thread comes first.
template <typename... Arguments>
class OneShot {
  public:
    using Callback = std::function<void(Arguments...)>;

    /// Keeps `callback` (not empty); one kept earlier is released without being called. Any thread.
    void store(Callback callback) {
        callback_.store(std::make_shared<Callback>(std::move(callback)));
    }

    /// Takes the completion out and leaves the field empty; an empty result when there is none. Any
    /// thread; of several callers exactly one gets it.
    [[nodiscard]] Callback take() {
        const std::shared_ptr<Callback> taken = callback_.take();
        return taken ? std::move(*taken) : Callback();
    }

  private:
    AtomicReference<Callback> callback_;
};

}  // namespace tarvik
