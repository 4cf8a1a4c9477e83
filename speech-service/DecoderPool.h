// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "base/Result.h"
#include "base/Time.h"
#include "speech-service/Engine.h"

namespace tarvik::service {

/// Keeps loaded decoders ready, so that a stream need not wait for the loading. Any thread.
class DecoderPool : public std::enable_shared_from_this<DecoderPool> {
  public:
    /// Returns a decoder to its pool.
    class Returner {
      public:
        Returner() = default;
        explicit Returner(std::shared_ptr<DecoderPool> pool) : pool_(std::move(pool)) {}
        void operator()(Decoder* decoder) const;

      private:
        std::shared_ptr<DecoderPool> pool_;
    };
    using Lease = std::unique_ptr<Decoder, Returner>;

    static std::shared_ptr<DecoderPool> create(std::shared_ptr<Engine> engine);

    const EngineInfo& info() const { return engine_->info(); }

    /// A decoder for one stream. The lease holds the pool. Blocks for a loading if no decoder is
    /// ready.
    Result<Lease> acquire();

    /// Loads a decoder if none is ready, and blocks during the loading.
    std::optional<Error> prepare();

    /// Frees the memory of the decoders that were ready for `age` and longer. One stays ready.
    void releaseIdle(Seconds age);

    /// The number of decoders that are ready.
    std::size_t readyCount() const;

  private:
    using Clock = std::chrono::steady_clock;
    struct Ready {
        std::unique_ptr<Decoder> decoder;
        Clock::time_point since;
    };

    explicit DecoderPool(std::shared_ptr<Engine> engine) : engine_(std::move(engine)) {}
    std::unique_ptr<Decoder> takeReady();
    Result<std::unique_ptr<Decoder>> takeOrLoad();
    void giveBack(std::unique_ptr<Decoder> decoder);

    const std::shared_ptr<Engine> engine_;
    mutable std::mutex readyMutex_;
    std::vector<Ready> ready_;
    /// Serializes the loading: a waiting caller may find a ready decoder after it.
    std::mutex loadMutex_;
};

}  // namespace tarvik::service
