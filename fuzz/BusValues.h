// SPDX-License-Identifier: MIT
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <systemd/sd-bus.h>

namespace tarvik::fuzz {

/// Appends up to `maxCount` values of any types to `message`.
void appendValues(FuzzedDataProvider& input, sd_bus_message* message, int maxCount);

/// Appends one value of the D-Bus type `type`, such as "a{sv}": its shape is given, its content is
/// the input's.
void appendValue(FuzzedDataProvider& input, sd_bus_message* message, const char* type);

}  // namespace tarvik::fuzz
