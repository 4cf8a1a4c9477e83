// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "base/AtomicReference.h"

namespace tarvik {

/// A completion that only one of several threads can take, so that it is called at most once.
template <typename... Arguments>
class OneShot {
  public:
    using Callback = std::function<void(Arguments...)>;

    /// Stores `callback` (not empty). An earlier callback is released without being called. Any
    /// thread.
    void store(Callback callback) {
        callback_.store(std::make_shared<Callback>(std::move(callback)));
    }

    /// Takes the completion out and leaves this object empty. The result is empty when there is no
    /// completion. Any thread; exactly one of several callers gets the completion.
    [[nodiscard]] Callback take() {
        const std::shared_ptr<Callback> taken = callback_.take();
        return taken ? std::move(*taken) : Callback();
    }

  private:
    AtomicReference<Callback> callback_;
};

}  // namespace tarvik
