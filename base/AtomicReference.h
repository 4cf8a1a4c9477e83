// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace tarvik {

/// A shared reference that any thread may read and replace.
///
/// It replaces std::atomic<std::shared_ptr<T>>. libc++ does not have that type, and the thread
/// sanitizer cannot follow the one of libstdc++ 12. The free functions for a std::shared_ptr are
/// deprecated. They lock a mutex too, and so does this class. The mutex is held while one pointer
/// is copied, and no other code runs under it.
template <typename T>
class AtomicReference {
  public:
    AtomicReference() = default;
    AtomicReference(const AtomicReference&) = delete;
    AtomicReference& operator=(const AtomicReference&) = delete;

    /// The current reference, which may be empty. Any thread.
    std::shared_ptr<T> load() const {
        const std::scoped_lock lock(mutex_);
        return reference_;
    }

    /// Replaces the reference. The old reference is released on the calling thread. Any thread.
    void store(std::shared_ptr<T> reference) { exchange(std::move(reference)); }

    /// Takes the reference out and leaves this object empty. Any thread; only one caller gets a
    /// stored reference.
    std::shared_ptr<T> take() { return exchange(nullptr); }

  private:
    std::shared_ptr<T> exchange(std::shared_ptr<T> reference) {
        const std::scoped_lock lock(mutex_);
        reference_.swap(reference);
        return reference;
    }

    mutable std::mutex mutex_;
    std::shared_ptr<T> reference_;
};

}  // namespace tarvik
