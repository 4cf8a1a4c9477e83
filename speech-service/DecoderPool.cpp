// SPDX-License-Identifier: MIT

#include "speech-service/DecoderPool.h"

#include <malloc.h>

#include <algorithm>
#include <utility>

namespace tarvik::service {

namespace {

// More decoders would take memory, but more streams at once are rare.
constexpr std::size_t maxReady = 2;

// The allocator keeps freed memory for the thread that had it, and decoders are loaded on threads
// that have ended.
void returnFreeMemory() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
}

}  // namespace

void DecoderPool::Returner::operator()(Decoder* decoder) const {
    pool_->giveBack(std::unique_ptr<Decoder>(decoder));
}

std::shared_ptr<DecoderPool> DecoderPool::create(std::shared_ptr<Engine> engine) {
    return std::shared_ptr<DecoderPool>(new DecoderPool(std::move(engine)));
}

Result<DecoderPool::Lease> DecoderPool::acquire() {
    Result<std::unique_ptr<Decoder>> decoder = takeOrLoad();
    if (!decoder) {
        return decoder.error();
    }
    return Lease(std::move(decoder).value().release(), Returner(shared_from_this()));
}

std::optional<Error> DecoderPool::prepare() {
    const std::lock_guard lock(loadMutex_);
    Result<std::unique_ptr<Decoder>> decoder = takeReady();
    if (!decoder.value()) {
        decoder = engine_->createDecoder();
    }
    if (!decoder) {
        return decoder.error();
    }
    giveBack(std::move(decoder).value());
    return std::nullopt;
}

void DecoderPool::releaseIdle(Seconds age) {
    std::vector<Ready> old;
    {
        const std::lock_guard lock(readyMutex_);
        const Clock::time_point now = Clock::now();
        while (ready_.size() > 1 && Seconds(now - ready_.front().since) >= age) {
            old.push_back(std::move(ready_.front()));
            ready_.erase(ready_.begin());
        }
    }
    if (!old.empty()) {
        old.clear();
        returnFreeMemory();
    }
}

std::size_t DecoderPool::readyCount() const {
    const std::lock_guard lock(readyMutex_);
    return ready_.size();
}

std::unique_ptr<Decoder> DecoderPool::takeReady() {
    const std::lock_guard lock(readyMutex_);
    if (ready_.empty()) {
        return nullptr;
    }
    std::unique_ptr<Decoder> decoder = std::move(ready_.back().decoder);
    ready_.pop_back();
    return decoder;
}

Result<std::unique_ptr<Decoder>> DecoderPool::takeOrLoad() {
    if (std::unique_ptr<Decoder> decoder = takeReady()) {
        return decoder;
    }
    const std::lock_guard lock(loadMutex_);
    if (std::unique_ptr<Decoder> decoder = takeReady()) {
        return decoder;
    }
    return engine_->createDecoder();
}

void DecoderPool::giveBack(std::unique_ptr<Decoder> decoder) {
    {
        const std::lock_guard lock(readyMutex_);
        if (ready_.size() < maxReady) {
            ready_.push_back({std::move(decoder), Clock::now()});
        }
    }
    if (decoder) {
        decoder.reset();
        returnFreeMemory();
    }
}

}  // namespace tarvik::service
