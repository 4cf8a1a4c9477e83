#pragma once

#include <memory>
#include <utility>

namespace tarvik {

/// A shared reference that one thread replaces and others read, without a lock of ours.
///
/// It stands in for std::atomic<std::shared_ptr<T>>, which libc++ does not have and whose libstdc++
/// 12 form the thread sanitizer cannot follow; both libraries offer the free functions used here.
template <typename T>
class AtomicReference {
  public:
    AtomicReference() = default;
    AtomicReference(const AtomicReference&) = delete;
    AtomicReference& operator=(const AtomicReference&) = delete;

    /// The reference as it is now; may be empty. Any thread.
    std::shared_ptr<T> load() const { return std::atomic_load(&reference_); }

    /// Replaces the reference; the old one is released on the calling thread. Any thread.
    void store(std::shared_ptr<T> reference) {
        std::atomic_exchange(&reference_, std::move(reference));
    }

    /// Takes the reference out and leaves the field empty. Any thread; at most one caller gets it.
    std::shared_ptr<T> take() { return std::atomic_exchange(&reference_, std::shared_ptr<T>()); }

  private:
    std::shared_ptr<T> reference_;
};

}  // namespace tarvik
