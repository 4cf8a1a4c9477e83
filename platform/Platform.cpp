// SPDX-License-Identifier: MIT

#include "platform/Platform.h"

#include <cstdlib>

namespace tarvik::platform {

namespace {
std::atomic<Platform*> currentPlatform = nullptr;
}

Platform::Platform() {
    Platform* none = nullptr;
    if (!currentPlatform.compare_exchange_strong(none, this)) {
        std::abort();
    }
}

Platform::~Platform() {
    releaseSharedInstances();
    currentPlatform.store(nullptr);
}

void Platform::releaseSharedInstances() {
    SharedSlot* slot = sharedSlots_.exchange(nullptr);
    while (slot != nullptr) {
        SharedSlot* next = slot->next;
        delete slot;
        slot = next;
    }
}

Platform& Platform::current() {
    Platform* platform = currentPlatform.load();
    if (platform == nullptr) {
        std::abort();
    }
    return *platform;
}

// Slots are only added at the front, and never removed before the end, so a search needs no lock.
// When two threads add the same type, the second exchange fails and the search finds the first.
Platform::SharedSlot& Platform::sharedSlot(const void* type) {
    std::unique_ptr<SharedSlot> fresh;
    SharedSlot* head = sharedSlots_.load(std::memory_order_acquire);
    while (true) {
        for (SharedSlot* slot = head; slot != nullptr; slot = slot->next) {
            if (slot->type == type) {
                return *slot;
            }
        }
        if (!fresh) {
            fresh = std::make_unique<SharedSlot>();
            fresh->type = type;
        }
        fresh->next = head;
        if (sharedSlots_.compare_exchange_weak(head, fresh.get(), std::memory_order_acq_rel)) {
            return *fresh.release();
        }
    }
}

}  // namespace tarvik::platform
