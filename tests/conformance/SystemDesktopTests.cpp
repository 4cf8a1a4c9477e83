#include <systemd/sd-bus.h>
#include <xcb/xcb.h>

#include <QApplication>
#include <QLineEdit>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/system/QtUserInterface.h"
#include "platform/linux/system/X11Server.h"
#include "tests/conformance/SystemLinuxTest.h"
#include "tests/conformance/SystemNotifierHost.h"
#include "tests/conformance/SystemProcess.h"

namespace tarvik::conformance {

namespace {

using linuxdesktop::x11Atom;
using linuxdesktop::X11Reply;

/// Another program's connection to the X server.
class OtherProgram {
  public:
    OtherProgram() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
    }
    ~OtherProgram() { xcb_disconnect(connection_); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    /// Puts the pointer where no window is: a window manager may give the keyboard to what is under
    /// it.
    void movePointerAway() {
        xcb_warp_pointer(connection_, XCB_WINDOW_NONE, root_, 0, 0, 0, 0, 0, 0);
        const X11Reply<xcb_query_pointer_reply_t> arrived(
            xcb_query_pointer_reply(connection_, xcb_query_pointer(connection_, root_), nullptr));
        EXPECT_TRUE(arrived);
    }

    /// The window that has the keyboard.
    xcb_window_t activeWindow() const {
        const X11Reply<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
        return reply ? reply->focus : static_cast<xcb_window_t>(XCB_WINDOW_NONE);
    }

    std::string activeTitle() const {
        const X11Reply<xcb_get_property_reply_t> reply(
            xcb_get_property_reply(connection_,
                                   xcb_get_property(connection_, 0, activeWindow(),
                                                    XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 0, 1024),
                                   nullptr));
        if (!reply) {
            return {};
        }
        return {static_cast<const char*>(xcb_get_property_value(reply.get())),
                static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
    }

    /// Becomes the tray of the screen, and says so.
    void becomeTray() {
        window_ = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, root_, 0, 0, 32, 32, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        const xcb_atom_t selection = x11Atom(connection_, "_NET_SYSTEM_TRAY_S0");
        xcb_set_selection_owner(connection_, window_, selection, XCB_CURRENT_TIME);
        xcb_client_message_event_t event{};
        event.response_type = XCB_CLIENT_MESSAGE;
        event.format = 32;
        event.window = root_;
        event.type = x11Atom(connection_, "MANAGER");
        event.data.data32[1] = selection;
        event.data.data32[2] = window_;
        xcb_send_event(connection_, 0, root_, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&event));
        xcb_flush(connection_);
    }

    /// Whether somebody has asked the tray for a place.
    bool hasGuest() {
        constexpr std::uint32_t requestDock = 0;
        const xcb_atom_t opcode = x11Atom(connection_, "_NET_SYSTEM_TRAY_OPCODE");
        while (const X11Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection_)}) {
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE) {
                xcb_client_message_event_t message{};
                std::memcpy(&message, event.get(), sizeof message);
                hasGuest_ =
                    hasGuest_ || (message.type == opcode && message.data.data32[1] == requestDock);
            }
        }
        return hasGuest_;
    }

  private:
    xcb_connection_t* connection_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    xcb_window_t window_ = XCB_WINDOW_NONE;
    bool hasGuest_ = false;
};

class SystemAlertTest : public SystemLinuxTest {
  protected:
    /// Waits until the window is there that the user works in.
    void openOtherWindow() {
        const std::string title = folder.path();
        program.movePointerAway();
        other.emplace(std::vector<std::string>{"xterm", "-geometry", "80x10+100+100", "-title",
                                               title, "-e", "sleep", "600"});
        EXPECT_TRUE(runUntil([&] { return program.activeTitle() == title; }));
    }

    platform::AlertAnswer ask() {
        platform::Alert alert;
        alert.messageText = "Deepgram API Key";
        alert.fieldText = "stored key";
        alert.fieldWidth = 360;
        alert.fieldHeight = 24;
        alert.buttons = {"Save", "Cancel"};
        // Keys that went astray must not keep the test up for good.
        mainQueue.asyncAfter(Seconds(10), [] {
            if (QWidget* window = QApplication::activeModalWidget()) {
                window->close();
            }
        });
        const platform::AlertAnswer answer = userInterface.runModal(alert);
        if (keys) {
            // Ended in the middle of a stroke, it would leave a key down.
            keys->waitForEnd();
        }
        return answer;
    }

    /// Has the keys pressed, by somebody who sees nothing but the keyboard, once the alert has it.
    void pressWhenActive(const std::string& command) {
        mainQueue.asyncAfter(Seconds(0.01), [this, command] {
            const QWidget* alert = QApplication::activeWindow();
            if (alert == nullptr || program.activeWindow() != alert->winId()) {
                pressWhenActive(command);
                return;
            }
            selected = alert->findChild<QLineEdit*>()->selectedText().toStdString();
            keys.emplace(std::vector<std::string>{"sh", "-c", command});
        });
    }

    OtherProgram program;
    std::optional<SystemProcess> other;
    std::optional<SystemProcess> keys;
    std::string selected;
    linuxdesktop::QtUserInterface userInterface{clock, log};
};

TEST_F(SystemAlertTest, TheAlertTakesTheKeyboardFromAnotherProgramWithItsTextSelected) {
    openOtherWindow();
    pressWhenActive("xdotool type new && xdotool key Return");
    const platform::AlertAnswer answer = ask();
    EXPECT_EQ(selected, "stored key");
    EXPECT_EQ(answer.code, platform::alertFirstButtonReturn);
    EXPECT_EQ(answer.fieldText, "new");
}

TEST_F(SystemAlertTest, EscapeIsCancel) {
    openOtherWindow();
    pressWhenActive("xdotool key Escape");
    EXPECT_EQ(ask().code, platform::alertFirstButtonReturn + 1);
}

TEST_F(SystemAlertTest, TheEditingShortcutsWorkInTheField) {
    openOtherWindow();
    pressWhenActive(
        "xdotool key ctrl+c && xdotool key End && xdotool key ctrl+v && xdotool key ctrl+z && "
        "xdotool key ctrl+shift+z && xdotool key ctrl+v && xdotool key ctrl+a && xdotool key "
        "ctrl+x "
        "&& xdotool key ctrl+v && xdotool key Return");
    EXPECT_EQ(ask().fieldText, "stored keystored keystored key");
}

class SystemTrayTest : public SystemLinuxTest {
  protected:
    std::shared_ptr<platform::StatusItem> makeItem() {
        auto item = userInterface.makeStatusItem();
        item->button()->setImage(userInterface.systemSymbol("mic", "Tarvik Dictate"));
        return item;
    }

    linuxdesktop::QtUserInterface userInterface{clock, log};
};

using SystemX11TrayTest = SystemTrayTest;

TEST_F(SystemX11TrayTest, TheItemAppearsInATrayThatComesLater) {
    const auto item = makeItem();
    OtherProgram tray;
    // A main loop that has gone round knows that there is no tray yet.
    bool isLater = false;
    mainQueue.asyncAfter(Seconds(0.1), [&] { isLater = true; });
    EXPECT_TRUE(runUntil([&] { return isLater; }));
    tray.becomeTray();
    EXPECT_TRUE(runUntil([&] { return tray.hasGuest(); }));
}

using SystemNotifierTrayTest = SystemTrayTest;

std::string toolTipTitle(const std::string& owner) {
    sd_bus* bus = nullptr;
    sd_bus_message* reply = nullptr;
    std::string title;
    if (sd_bus_open_user(&bus) >= 0 &&
        sd_bus_get_property(bus, owner.c_str(), "/StatusNotifierItem", "org.kde.StatusNotifierItem",
                            "ToolTip", nullptr, &reply, "(sa(iiay)ss)") >= 0) {
        const char* name = nullptr;
        const char* text = nullptr;
        sd_bus_message_enter_container(reply, 'r', "sa(iiay)ss");
        sd_bus_message_read(reply, "s", &name);
        sd_bus_message_skip(reply, "a(iiay)");
        sd_bus_message_read(reply, "s", &text);
        title = text != nullptr ? text : "";
    }
    sd_bus_message_unref(reply);
    sd_bus_flush_close_unref(bus);
    return title;
}

TEST_F(SystemNotifierTrayTest, TheItemAppearsInAPanelThatComesLaterAndTellsItsState) {
    const auto item = makeItem();
    bool isLater = false;
    mainQueue.asyncAfter(Seconds(0.1), [&] { isLater = true; });
    EXPECT_TRUE(runUntil([&] { return isLater; }));
    const SystemNotifierHost panel;
    EXPECT_TRUE(runUntil([&] { return !panel.item().empty(); }));
    item->button()->setContentTintColor(platform::SystemColor::red);
    std::string title;
    std::thread asking;
    EXPECT_TRUE(runUntil([&] {
        std::atomic<bool> isAnswered = false;
        asking = std::thread([&] {
            title = toolTipTitle(panel.item());
            isAnswered = true;
        });
        EXPECT_TRUE(runUntil([&] { return isAnswered.load(); }));
        asking.join();
        return title == "Tarvik Dictate – recording";
    }));
}

}  // namespace

}  // namespace tarvik::conformance
