// SPDX-License-Identifier: MIT

#include "tests/linux/x11/X11Target.h"

#include <signal.h>
#include <stdlib.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace tarvik::tests {

namespace {

using namespace std::chrono_literals;

std::vector<std::string> commandFor(X11Target::Kind kind, const std::string& file) {
    const std::string folder = TARVIK_TARGETS;
    const auto python = [&](const std::string& program, const std::vector<std::string>& options) {
        std::vector<std::string> command{"/usr/bin/python3", folder + "/" + program, "--out", file};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    };
    switch (kind) {
        case X11Target::Kind::gtk3Entry:
            return python("gtk3_target.py", {"--widget", "entry", "--menu-bar"});
        case X11Target::Kind::gtk3Text:
            return python("gtk3_target.py", {"--menu-bar"});
        case X11Target::Kind::gtk4Text:
            return python("gtk4_target.py", {});
        case X11Target::Kind::qt5Text:
            return python("qt5_target.py", {});
        case X11Target::Kind::qt6Entry:
            return python("qt6_target.py", {"--widget", "entry", "--menu-bar"});
        case X11Target::Kind::qt6Text:
            return python("qt6_target.py", {});
        case X11Target::Kind::tkText:
            return python("tk_target.py", {});
        case X11Target::Kind::terminal:
            // The terminal's output is not ours, so the shell inside tells when it is ready.
            return {"xterm", "-u8", "-e",
                    "stty raw -echo; : > '" + file + "'; exec cat >> '" + file + "'"};
    }
    return {};
}

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

platform::ProcessIdentifier onlyChildOf(platform::ProcessIdentifier process) {
    const std::string number = std::to_string(process);
    return std::stoi(contentOf("/proc/" + number + "/task/" + number + "/children"));
}

}  // namespace

X11Target::X11Target(Kind kind, RealTimeQueue& mainQueue, const std::vector<std::string>& wrapper) {
    std::string name = (std::filesystem::temp_directory_path() / "x11-target-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no folder for the text");
    }
    folder_ = name;
    std::vector<std::string> command = commandFor(kind, (folder_ / "text").string());
    command.insert(command.begin(), wrapper.begin(), wrapper.end());
    process_ = std::make_unique<TestProcess>(command);
    std::string output;
    const bool isReady = mainQueue.runUntil([&] {
        while (process_->readOutput(output)) {
        }
        return kind == Kind::terminal ? std::filesystem::exists(folder_ / "text")
                                      : output.find("ready") != std::string::npos;
    });
    if (!isReady) {
        throw std::runtime_error("the target did not get the focus");
    }
    program_ = wrapper.empty() ? process_->identifier() : onlyChildOf(process_->identifier());
}

X11Target::~X11Target() {
    process_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string X11Target::text() const {
    return contentOf(folder_ / "text");
}

void X11Target::end() {
    process_->kill();
    program_ = 0;
}

void X11Target::openSecondWindow(RealTimeQueue& mainQueue) const {
    kill(program_, SIGUSR1);
    if (!mainQueue.runUntil([&] { return std::filesystem::exists(folder_ / "text.second"); })) {
        throw std::runtime_error("the second window did not get the focus");
    }
}

std::string X11Target::textOfSecondWindow() const {
    return contentOf(folder_ / "text.second");
}

void X11Target::command(const std::string& line, std::string_view answer) {
    // The end of an earlier command is no answer to this one.
    std::string earlier;
    process_->readOutput(earlier);
    process_->write(line + "\n");
    while (const auto output = process_->readLine()) {
        if (*output == answer) {
            return;
        }
    }
    throw std::runtime_error("the target did not obey");
}

void X11Target::clear() {
    command("clear", "done");
}

void X11Target::occupy(const std::string& name, std::chrono::milliseconds time) {
    command(name + " " + std::to_string(std::chrono::duration<double>(time).count()), "busy");
}

void X11Target::hang() const {
    kill(program_, SIGSTOP);
}

void X11Target::goOn() const {
    kill(program_, SIGCONT);
}

bool X11Target::isRunning() const {
    return program_ != 0 && kill(program_, 0) == 0;
}

std::string nameOf(X11Target::Kind kind) {
    switch (kind) {
        case X11Target::Kind::gtk3Entry:
        case X11Target::Kind::gtk3Text:
            return "Gtk3";
        case X11Target::Kind::gtk4Text:
            return "Gtk4";
        case X11Target::Kind::qt5Text:
            return "Qt5";
        case X11Target::Kind::qt6Entry:
        case X11Target::Kind::qt6Text:
            return "Qt6";
        case X11Target::Kind::tkText:
            return "Tk";
        case X11Target::Kind::terminal:
            return "Terminal";
    }
    return "";
}

}  // namespace tarvik::tests
