// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "base/Result.h"
#include "speech-service/Engine.h"

namespace tarvik::service {

/// The engine that works without any option.
inline constexpr std::string_view defaultEngine = "pocketsphinx";

/// The names of the engines that this build has, joined by ", ".
std::string engineNames();

/// The engine `name` with the model at `model`; an empty path is the engine's own model. Nothing is
/// downloaded. The error's text is for the person who runs the service.
Result<std::unique_ptr<Engine>> createEngine(std::string_view name,
                                             const std::filesystem::path& model);

}  // namespace tarvik::service
