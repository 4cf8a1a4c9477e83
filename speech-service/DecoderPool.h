// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "base/Result.h"
#include "speech-service/Decoder.h"

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

    static std::shared_ptr<DecoderPool> create();

    /// A decoder for one stream. The lease holds the pool. Blocks for a loading if no decoder is
    /// ready.
    Result<Lease> acquire();

    /// Loads a decoder if none is ready, and blocks during the loading.
    std::optional<Error> prepare();

  private:
    DecoderPool() = default;
    std::unique_ptr<Decoder> takeReady();
    Result<std::unique_ptr<Decoder>> takeOrLoad();
    void giveBack(std::unique_ptr<Decoder> decoder);

    std::mutex readyMutex_;
    std::vector<std::unique_ptr<Decoder>> ready_;
    /// Serializes the loading: a waiting caller may find a ready decoder after it.
    std::mutex loadMutex_;
};

}  // namespace tarvik::service
