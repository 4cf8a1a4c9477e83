// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace tarvik {

/// A list of handlers. Each handler is called until its observation, the handle that add() returns,
/// is dropped. `Interface` is the public type of an observation: a class with a virtual destructor
/// and nothing else to implement.
///
/// All use is on one thread. An observation may outlive this object.
template <typename Interface>
class Observers {
  public:
    /// Adds `handler` (not empty), which call() calls from now on.
    [[nodiscard]] std::unique_ptr<Interface> add(std::function<void()> handler) {
        const std::uint64_t number = next_++;
        handlers_->emplace(number, std::move(handler));
        return std::make_unique<Observation>(handlers_, number);
    }

    /// The number of handlers.
    std::size_t count() const { return handlers_->size(); }

    /// Calls all handlers, in the order of their addition.
    ///
    /// A handler may drop any observation, including its own; a dropped handler is not called any
    /// more. A handler that is added during the call is first called at the next call. A handler
    /// may destroy this object.
    void call() const {
        const std::shared_ptr<Handlers> handlers = handlers_;
        std::vector<std::uint64_t> present;
        for (const auto& [number, handler] : *handlers) {
            present.push_back(number);
        }
        for (const std::uint64_t number : present) {
            if (const auto found = handlers->find(number); found != handlers->end()) {
                const auto handler = found->second;
                handler();
            }
        }
    }

  private:
    using Handlers = std::map<std::uint64_t, std::function<void()>>;

    class Observation final : public Interface {
      public:
        Observation(std::weak_ptr<Handlers> handlers, std::uint64_t number)
            : handlers_(std::move(handlers)), number_(number) {}
        ~Observation() override {
            if (const auto handlers = handlers_.lock()) {
                handlers->erase(number_);
            }
        }

      private:
        std::weak_ptr<Handlers> handlers_;
        std::uint64_t number_;
    };

    std::shared_ptr<Handlers> handlers_ = std::make_shared<Handlers>();
    std::uint64_t next_ = 0;
};

}  // namespace tarvik
