// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/ibus/EngineNames.h"
#include "platform/linux/ibus/IbusAddress.h"
#include "platform/linux/ibus/IbusMessages.h"
#include "platform/linux/loop/PollLoop.h"
#include "tests/linux/ibus/IbusProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

/// A real IBus with an American keyboard layout, and a program with a field.
class IbusFixture : public testing::Test {
  protected:
    static constexpr const char* layout = "xkb:us::eng";
    static constexpr const char* own = "ours";

    IbusFixture() {
        setenv("IBUS_ADDRESS_FILE", (folder.path() / "address").c_str(), 1);
        setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
        startIbus();
    }

    void startIbus() {
        std::filesystem::remove(folder.path() / "address");
        std::filesystem::remove(folder.path() / "socket");
        ibus.emplace(std::vector<std::string>{"ibus-daemon", "--panel", "disable", "--config",
                                              "disable", "--cache", "none", "--address",
                                              "unix:path=" + (folder.path() / "socket").string()});
        if (!runUntil([] { return static_cast<bool>(linuxdesktop::ibusAddress()); })) {
            ADD_FAILURE() << "IBus does not start";
        }
        program = std::make_unique<IbusProgram>(loop, linuxdesktop::ibusAddress().value());
        EXPECT_TRUE(runUntil([this] { return program->isReady(); }));
    }
    void choose(const std::string& engine) {
        const int before = program->chosenEngines;
        program->choose(engine);
        EXPECT_TRUE(runUntil([&] { return program->chosenEngines > before; }));
    }
    /// The engine's name, or `own`.
    std::string engineInUse() {
        program->askEngine();
        runUntil([this] { return program->engine.has_value(); });
        const std::string engine = program->engine.value_or("no answer");
        return linuxdesktop::isOwnEngine(engine) ? own : engine;
    }

    bool runUntil(const std::function<bool()>& condition,
                  std::chrono::milliseconds timeout = std::chrono::seconds(10)) {
        using std::chrono::steady_clock;
        const auto end = steady_clock::now() + timeout;
        bool holds = false;
        linuxdesktop::Deadline tick(loop);
        std::function<void()> wake = [&] { tick.set(std::chrono::milliseconds(5), wake); };
        wake();
        loop.run([&] {
            holds = condition();
            if (holds || steady_clock::now() >= end) {
                loop.quit();
            }
        });
        return holds;
    }
    void runFor(std::chrono::milliseconds interval) {
        runUntil([] { return false; }, interval);
    }

    TemporaryFolder folder;
    linuxdesktop::PollLoop loop;
    std::optional<TestProcess> ibus;
    std::unique_ptr<IbusProgram> program;
};

}  // namespace tarvik::tests
