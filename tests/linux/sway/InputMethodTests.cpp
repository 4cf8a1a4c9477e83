// SPDX-License-Identifier: MIT

// Emoji for programs that cut typed characters to 16 bits.

#include <cstring>
#include <filesystem>
#include <fstream>

#include "platform/linux/wayland/InputMethodProtocol.h"
#include "tests/linux/sway/SwayFixture.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

constexpr const char* leftOut =
    "typed text not delivered: the program would make other characters of these";

// A text field of GTK 3 that looks like a program with narrow keys.
class NarrowTarget {
  public:
    NarrowTarget(RealTimeQueue& mainQueue, const std::string& gtkInputMethod) {
        const std::filesystem::path program = folder_.path() / "program";
        std::filesystem::copy_file(std::filesystem::canonical("/usr/bin/python3"), program);
        std::ofstream(folder_.path() / "chrome_100_percent.pak") << "";
        process_.emplace(
            std::vector<std::string>{program, std::string(TARVIK_TARGETS) + "/gtk3_target.py",
                                     "--widget", "entry", "--out", file()},
            TestProcess::Options{{"PYTHONHOME=/usr", "GTK_IM_MODULE=" + gtkInputMethod}});
        std::string output;
        EXPECT_TRUE(mainQueue.runUntil([&] {
            while (process_->readOutput(output)) {
            }
            return output.find("ready") != std::string::npos;
        }));
    }

    platform::ProcessIdentifier process() const { return process_->identifier(); }
    std::string text() const { return contentOf(file()); }

  private:
    std::filesystem::path file() const { return folder_.path() / "text"; }

    const TemporaryFolder folder_;
    std::optional<TestProcess> process_;
};

// The input method of somebody else.
class OtherInputMethod {
  public:
    OtherInputMethod() : display_(wl_display_connect(nullptr)) {
        static constexpr wl_registry_listener listener{
            [](void* self, wl_registry* registry, std::uint32_t name, const char* interface,
               std::uint32_t) {
                static_cast<OtherInputMethod*>(self)->handleGlobal(registry, name, interface);
            },
            [](void*, wl_registry*, std::uint32_t) {}};
        static constexpr zwp_input_method_v2_listener methodListener{
            [](void*, zwp_input_method_v2*) {},
            [](void*, zwp_input_method_v2*) {},
            [](void*, zwp_input_method_v2*, const char*, std::uint32_t, std::uint32_t) {},
            [](void*, zwp_input_method_v2*, std::uint32_t) {},
            [](void*, zwp_input_method_v2*, std::uint32_t, std::uint32_t) {},
            [](void*, zwp_input_method_v2*) {},
            [](void* self, zwp_input_method_v2*) {
                static_cast<OtherInputMethod*>(self)->isRefused_ = true;
            }};
        wl_registry* registry = wl_display_get_registry(display_);
        wl_registry_add_listener(registry, &listener, this);
        wl_display_roundtrip(display_);
        wl_registry_destroy(registry);
        method_ = zwp_input_method_manager_v2_get_input_method(manager_, seat_);
        zwp_input_method_v2_add_listener(method_, &methodListener, this);
        wl_display_roundtrip(display_);
    }
    ~OtherInputMethod() {
        zwp_input_method_v2_destroy(method_);
        zwp_input_method_manager_v2_destroy(manager_);
        wl_seat_destroy(seat_);
        wl_display_roundtrip(display_);
        wl_display_disconnect(display_);
    }
    OtherInputMethod(const OtherInputMethod&) = delete;
    OtherInputMethod& operator=(const OtherInputMethod&) = delete;

    // Whether it has its place, or has lost it.
    bool isRefused() {
        wl_display_roundtrip(display_);
        return isRefused_;
    }

  private:
    void handleGlobal(wl_registry* registry, std::uint32_t name, const char* interface) {
        if (std::strcmp(interface, wl_seat_interface.name) == 0) {
            seat_ = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        } else if (std::strcmp(interface, zwp_input_method_manager_v2_interface.name) == 0) {
            manager_ = static_cast<zwp_input_method_manager_v2*>(
                wl_registry_bind(registry, name, &zwp_input_method_manager_v2_interface, 1));
        }
    }

    wl_display* display_;
    wl_seat* seat_ = nullptr;
    zwp_input_method_manager_v2* manager_ = nullptr;
    zwp_input_method_v2* method_ = nullptr;
    bool isRefused_ = false;
};

class SwayInputMethod : public SwayFixture, public testing::Test {
  protected:
    void start(const std::string& gtkInputMethod) {
        target.emplace(mainQueue, gtkInputMethod);
        ASSERT_TRUE(mainQueue.runUntil([&] { return input->chooseTarget() == target->process(); }));
    }
    void expectText(const std::string& text) {
        EXPECT_TRUE(mainQueue.runUntil([&] { return target->text() == text; }));
        EXPECT_EQ(target->text(), text);
    }

    std::optional<NarrowTarget> target;
};

TEST_F(SwayInputMethod, BringsEmojiWithTheTextAroundThemAndIsGivenBack) {
    start("wayland");
    type("Plain, ", target->process());
    type("fine 👍🏽 family 👨‍👩‍👧‍👦 end, ", target->process());
    type("plain.", target->process());
    expectText("Plain, fine 👍🏽 family 👨‍👩‍👧‍👦 end, plain.");
    EXPECT_TRUE(log.linesWith("typed text").empty());
    OtherInputMethod other;
    EXPECT_FALSE(other.isRefused());
}

TEST_F(SwayInputMethod, BringsMoreThanOneMessageHolds) {
    start("wayland");
    std::string text;
    for (int i = 0; i < 1500; ++i) {
        text += i % 10 == 0 ? "ż" : "😀";
    }
    type(text, target->process());
    expectText(text);
    EXPECT_TRUE(log.linesWith("typed text").empty());
}

TEST_F(SwayInputMethod, IsNotTakenFromTheUser) {
    OtherInputMethod other;
    start("wayland");
    type("fine 👍 end", target->process());
    expectText("fine  end");
    EXPECT_EQ(log.linesWith(leftOut).size(), 1U);
    EXPECT_TRUE(log.hasLineWith("and the session has another input method (1 characters)"));
    EXPECT_FALSE(other.isRefused());
}

TEST_F(SwayInputMethod, CannotHelpWhereNoTextFieldListens) {
    start("gtk-im-context-simple");
    type("fine 👍 end", target->process());
    expectText("fine  end");
    EXPECT_EQ(log.linesWith(leftOut).size(), 1U);
    EXPECT_TRUE(log.hasLineWith("and no text field of it listens (1 characters)"));
}

}  // namespace

}  // namespace tarvik::tests
