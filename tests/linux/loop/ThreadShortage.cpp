// SPDX-License-Identifier: MIT

#include "tests/linux/loop/ThreadShortage.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <limits>

namespace tarvik::tests {

namespace {

constexpr int unlimited = std::numeric_limits<int>::max();
std::atomic<int> left = unlimited;

}  // namespace

ThreadShortage::ThreadShortage(int threadsLeft) {
    left = threadsLeft;
}

ThreadShortage::~ThreadShortage() {
    left = unlimited;
}

}  // namespace tarvik::tests

// Stands in front of the system's own function, for the standard library as well.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* argument) noexcept {
    using tarvik::tests::left;
    static const auto create =
        reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    if (left != tarvik::tests::unlimited && left.fetch_sub(1) <= 0) {
        return EAGAIN;
    }
    return create(thread, attributes, body, argument);
}
