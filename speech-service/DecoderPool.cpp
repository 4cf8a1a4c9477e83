// SPDX-License-Identifier: MIT

#include "speech-service/DecoderPool.h"

namespace tarvik::service {

namespace {

// More decoders would take memory, but more streams at once are rare.
constexpr std::size_t maxReady = 2;

}  // namespace

void DecoderPool::Returner::operator()(Decoder* decoder) const {
    pool_->giveBack(std::unique_ptr<Decoder>(decoder));
}

std::shared_ptr<DecoderPool> DecoderPool::create() {
    return std::shared_ptr<DecoderPool>(new DecoderPool());
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
        decoder = Decoder::load();
    }
    if (!decoder) {
        return decoder.error();
    }
    giveBack(std::move(decoder).value());
    return std::nullopt;
}

std::unique_ptr<Decoder> DecoderPool::takeReady() {
    const std::lock_guard lock(readyMutex_);
    if (ready_.empty()) {
        return nullptr;
    }
    std::unique_ptr<Decoder> decoder = std::move(ready_.back());
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
    return Decoder::load();
}

void DecoderPool::giveBack(std::unique_ptr<Decoder> decoder) {
    const std::lock_guard lock(readyMutex_);
    if (ready_.size() < maxReady) {
        ready_.push_back(std::move(decoder));
    }
}

}  // namespace tarvik::service
