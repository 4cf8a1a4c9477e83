// SPDX-License-Identifier: MIT

#include "tests/linux/websocket/HeldLookup.h"

#include <dlfcn.h>
#include <netdb.h>

#include <condition_variable>
#include <mutex>

namespace tarvik::tests {

namespace {

std::mutex mutex;
std::condition_variable changed;
bool isHeld = false;
// Empty for the name that is looked up.
std::string address;

void release(const std::string& answer) {
    const std::lock_guard lock(mutex);
    isHeld = false;
    address = answer;
    changed.notify_all();
}

std::string waitForAddress(const char* name) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [] { return !isHeld; });
    return address.empty() ? name : address;
}

}  // namespace

HeldLookup::HeldLookup() {
    const std::lock_guard lock(mutex);
    isHeld = true;
}

HeldLookup::~HeldLookup() {
    release("");
}

void HeldLookup::answer(const std::string& answer) {
    release(answer);
}

}  // namespace tarvik::tests

// Stands in front of the system's own function.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints,
                           addrinfo** found) {
    static const auto lookUp =
        reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return lookUp(tarvik::tests::waitForAddress(name).c_str(), service, hints, found);
}
