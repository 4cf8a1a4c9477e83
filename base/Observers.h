#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace tarvik {

/// Handlers, each of which is called until its observation is dropped. `Interface` is what an
/// observation is handed out as: a class with a virtual destructor and nothing else to implement.
///
/// One thread. An observation may outlive the object.
template <typename Interface>
class Observers {
  public:
    /// `handler` (not empty) is called from now on.
    [[nodiscard]] std::unique_ptr<Interface> add(std::function<void()> handler) {
        const std::uint64_t number = next_++;
        handlers_->emplace(number, std::move(handler));
        return std::make_unique<Observation>(handlers_, number);
    }

    std::size_t count() const { return handlers_->size(); }

    /// Calls every handler there is, in the order in which they came. A handler may drop any
    /// observation, its own included, and one that was dropped is not called any more; one that is
    /// added meanwhile has to wait for the next call. This object may end meanwhile.
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
