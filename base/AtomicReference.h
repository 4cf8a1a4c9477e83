// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <utility>

namespace tarvik {

/// A shared reference that any thread may read and replace, without a mutex of its own.
///
/// It replaces std::atomic<std::shared_ptr<T>>. libc++ does not have that type, and the thread
/// sanitizer cannot follow the one of libstdc++ 12. Both libraries have the free functions used
/// here.
template <typename T>
class AtomicReference {
  public:
    AtomicReference() = default;
    AtomicReference(const AtomicReference&) = delete;
    AtomicReference& operator=(const AtomicReference&) = delete;

    /// The current reference, which may be empty. Any thread.
    std::shared_ptr<T> load() const { return std::atomic_load(&reference_); }

    /// Replaces the reference. The old reference is released on the calling thread. Any thread.
    void store(std::shared_ptr<T> reference) {
        std::atomic_exchange(&reference_, std::move(reference));
    }

    /// Takes the reference out and leaves this object empty. Any thread; only one caller gets a
    /// stored reference.
    std::shared_ptr<T> take() { return std::atomic_exchange(&reference_, std::shared_ptr<T>()); }

  private:
    std::shared_ptr<T> reference_;
};

}  // namespace tarvik
