// SPDX-License-Identifier: MIT

#include "tests/linux/audio/ReportedRate.h"

#include <dlfcn.h>
#include <pulse/pulseaudio.h>

#include <atomic>

namespace tarvik::tests {

namespace {

std::atomic<std::uint32_t> reportedRate = 0;
std::atomic<int> reportedLists = 0;
/// The only receiver of lists in this process.
std::atomic<pa_source_info_cb_t> receiver = nullptr;

void report(pa_context* context, const pa_source_info* info, int last, void* data) {
    pa_source_info changed{};
    const std::uint32_t rate = reportedRate;
    if (info != nullptr && rate != 0) {
        changed = *info;
        changed.sample_spec.rate = rate;
        info = &changed;
    }
    receiver.load()(context, info, last, data);
    if (last != 0 && rate != 0) {
        ++reportedLists;
    }
}

}  // namespace

ReportedRate::ReportedRate(std::uint32_t sampleRate) {
    reportedLists = 0;
    reportedRate = sampleRate;
}

ReportedRate::~ReportedRate() {
    reportedRate = 0;
}

int ReportedRate::lists() const {
    return reportedLists;
}

}  // namespace tarvik::tests

// Stands in front of the library's own function.
extern "C" pa_operation* pa_context_get_source_info_list(pa_context* context,
                                                         pa_source_info_cb_t callback, void* data) {
    static const auto request = reinterpret_cast<decltype(&pa_context_get_source_info_list)>(
        dlsym(RTLD_NEXT, "pa_context_get_source_info_list"));
    tarvik::tests::receiver = callback;
    return request(context, &tarvik::tests::report, data);
}
