// SPDX-License-Identifier: MIT

#include <xcb/xcb.h>

#include <QApplication>
#include <QCursor>
#include <QDialog>
#include <QKeyEvent>
#include <QScreen>
#include <QWidget>
#include <array>
#include <cstdint>
#include <cstdlib>

#include "platform/linux/windows/QtMenu.h"
#include "platform/linux/windows/ScreenGeometry.h"
#include "platform/linux/windows/X11Server.h"
#include "tests/linux/windows/Contrast.h"
#include "tests/linux/windows/SampleWindow.h"
#include "tests/linux/windows/StatusNotifierHost.h"
#include "tests/linux/windows/UserInterfaceTest.h"
#include "tests/support/TestProcess.h"

namespace tarvik::tests {

namespace {

using MenuTest = UserInterfaceTest;

TEST_F(MenuTest, KeyEquivalentsAreShownWithControlForCommand) {
    linuxdesktop::QtMenu menu;
    const auto entry = [](const char* title, const char* key, std::uint32_t modifiers) {
        platform::MenuItem item;
        item.title = title;
        item.keyEquivalent = key;
        item.modifierMask = modifiers;
        return item;
    };
    menu.setItems({entry("Setup…", ",", platform::commandKeyFlag),
                   entry("Restart", "r", platform::commandKeyFlag | platform::shiftKeyFlag),
                   entry("Redo", "Z", platform::commandKeyFlag),
                   entry("Nothing", "", platform::commandKeyFlag)});
    std::vector<std::string> shown;
    for (const QAction* action : menu.menu().actions()) {
        EXPECT_TRUE(action->isShortcutVisibleInContextMenu());
        shown.push_back(action->shortcut().toString(QKeySequence::PortableText).toStdString());
    }
    EXPECT_EQ(shown, (std::vector<std::string>{"Ctrl+,", "Ctrl+Shift+R", "Ctrl+Shift+Z", ""}));
}

/// A menu with one entry, which counts how often it is chosen.
class ShortcutTest : public UserInterfaceTest {
  protected:
    ShortcutTest() {
        platform::MenuItem item;
        item.title = "Setup…";
        item.keyEquivalent = ",";
        item.modifierMask = platform::commandKeyFlag;
        item.action = [this] { ++chosen; };
        menu.setItems({item});
    }

    static void press(QWidget& widget, int key, Qt::KeyboardModifiers modifiers) {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QApplication::sendEvent(&widget, &event);
    }

    linuxdesktop::QtMenu menu;
    int chosen = 0;
};

TEST_F(ShortcutTest, WorksInAWindowWhateverHasTheFocus) {
    SampleWindow sample(userInterface);
    press(*sample.field(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(chosen, 1);
    press(sample.widget(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(chosen, 2);
    press(*sample.field(), Qt::Key_Comma, Qt::NoModifier);
    press(*sample.field(), Qt::Key_Comma, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(chosen, 2);
}

TEST_F(ShortcutTest, WorksInTheOpenMenuAndClosesIt) {
    menu.menu().popup(QPoint(10, 10));
    press(menu.menu(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(chosen, 1);
    EXPECT_FALSE(menu.menu().isVisible());
}

TEST_F(ShortcutTest, WaitsForTheAnswerToAModalWindow) {
    QDialog dialog;
    dialog.setModal(true);
    dialog.show();
    press(dialog, Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(chosen, 0);
}

TEST_F(MenuTest, DisabledEntriesOfAMenuAreLegibleAndWeakerThanOthersUnderEveryTheme) {
    linuxdesktop::QtMenu menu;
    for (const QColor& window : {QColor(Qt::white), QColor(0xef, 0xef, 0xef), darkWindow}) {
        QApplication::setPalette(themed(window));
        menu.menu().popup(QPoint(10, 10));
        const QPalette palette = menu.menu().palette();
        menu.menu().hide();
        // Some styles fill a menu with the one colour, some with the other.
        for (const auto background : {QPalette::Base, QPalette::Window}) {
            const QColor filled = palette.color(background);
            const double disabled =
                contrast(palette.color(QPalette::Disabled, QPalette::Text), filled);
            EXPECT_GE(disabled, 4.5) << filled.name().toStdString();
            EXPECT_LT(disabled, 0.8 * contrast(palette.color(QPalette::Text), filled));
        }
    }
}

TEST_F(MenuTest, AMenuLiesBesideItsAnchorAndInItsAreaAsAWhole) {
    const QRect area(0, 40, 1000, 700);
    const QSize size(200, 300);
    const auto position = [&](const QRect& anchor) {
        return linuxdesktop::menuPosition(anchor, size, area);
    };
    EXPECT_EQ(position({500, 100, 20, 20}), QPoint(500, 120));
    EXPECT_EQ(position({500, 600, 20, 20}), QPoint(500, 300));
    EXPECT_EQ(position({500, 10, 20, 20}), QPoint(500, 40));
    EXPECT_EQ(position({500, 750, 20, 20}), QPoint(500, 440));
    EXPECT_EQ(position({990, 10, 20, 20}), QPoint(800, 40));
    EXPECT_EQ(position({-30, 100, 20, 20}), QPoint(0, 120));
}

/// A desktop whose menus may cover its panels.
struct PlasmaSession {
    PlasmaSession() {
        setenv("XDG_CURRENT_DESKTOP", "KDE", 1);
        setenv("KDE_SESSION_VERSION", "5", 1);
    }
    ~PlasmaSession() {
        unsetenv("XDG_CURRENT_DESKTOP");
        unsetenv("KDE_SESSION_VERSION");
    }
};

/// Another program's panel along an edge of the screen.
class Panel {
  public:
    Panel(const QRect& place, const QRect& screen) : connection_(xcb_connect(nullptr, nullptr)) {
        const xcb_window_t window = xcb_generate_id(connection_);
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
        xcb_create_window(
            connection_, XCB_COPY_FROM_PARENT, window, root, static_cast<std::int16_t>(place.x()),
            static_cast<std::int16_t>(place.y()), static_cast<std::uint16_t>(place.width()),
            static_cast<std::uint16_t>(place.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
            XCB_COPY_FROM_PARENT, 0, nullptr);
        const auto set = [&](const char* name, xcb_atom_t type, const auto& values) {
            xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window,
                                linuxdesktop::x11Atom(connection_, name), type, 32,
                                static_cast<std::uint32_t>(values.size()), values.data());
        };
        set("_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM,
            std::array{linuxdesktop::x11Atom(connection_, "_NET_WM_WINDOW_TYPE_DOCK")});
        const bool isUpright = place.height() > place.width();
        const auto reserved = [](bool isThere, int thickness) {
            return static_cast<std::uint32_t>(isThere ? thickness : 0);
        };
        set("_NET_WM_STRUT", XCB_ATOM_CARDINAL,
            std::array{reserved(isUpright && place.left() == screen.left(), place.width()),
                       reserved(isUpright && place.right() == screen.right(), place.width()),
                       reserved(!isUpright && place.top() == screen.top(), place.height()),
                       reserved(!isUpright && place.bottom() == screen.bottom(), place.height())});
        xcb_map_window(connection_, window);
        xcb_flush(connection_);
    }
    ~Panel() { xcb_disconnect(connection_); }
    Panel(const Panel&) = delete;
    Panel& operator=(const Panel&) = delete;

  private:
    xcb_connection_t* connection_;
};

/// The desktop is set before the application is made, because Qt reads it only then.
class X11MenuTest : private PlasmaSession, public UserInterfaceTest {
  protected:
    static QRect screen() { return QGuiApplication::primaryScreen()->geometry(); }
    static QRect room() { return QGuiApplication::primaryScreen()->availableGeometry(); }

    void movePointer(QPoint position) {
        QCursor::setPos(position);
        EXPECT_TRUE(runUntil([&] { return QCursor::pos() == position; }));
    }

    /// Asks for the menu as the panel does when the user clicks the icon. Returns the menu's
    /// rectangle.
    QRect clickIcon(const std::string& item) {
        const TestProcess click({"gdbus", "call", "--session", "--dest", item, "--object-path",
                                 "/StatusNotifierItem", "--method",
                                 "org.kde.StatusNotifierItem.Activate", "0", "0"});
        EXPECT_TRUE(runUntil([] { return QApplication::activePopupWidget() != nullptr; }));
        QWidget* menu = QApplication::activePopupWidget();
        return menu != nullptr ? menu->geometry() : QRect();
    }
};

TEST_F(X11MenuTest, TheMenuOpensBesideThePanelThatItsIconIsIn) {
    const StatusNotifierHost host;
    const auto item = userInterface.makeStatusItem();
    const auto menu = userInterface.makeMenu();
    platform::MenuItem quit;
    quit.title = "Quit Tarvik Dictate";
    menu->setItems({quit});
    item->setMenu(menu);
    ASSERT_TRUE(runUntil([&] { return !host.item().empty(); }));

    constexpr int thickness = 40;
    const auto [left, top, width, height] =
        std::array{screen().left(), screen().top(), screen().width(), screen().height()};
    const QRect edges[] = {{left, top, width, thickness},
                           {left, top + height - thickness, width, thickness},
                           {left, top, thickness, height},
                           {left + width - thickness, top, thickness, height}};
    for (const QRect& edge : edges) {
        const Panel panel(edge, screen());
        EXPECT_TRUE(runUntil([&] { return !room().intersects(edge); }));
        movePointer(edge.center());
        const QRect opened = clickIcon(host.item());
        EXPECT_TRUE(room().contains(opened));
        // The menu touches the panel.
        EXPECT_TRUE(opened.adjusted(-1, -1, 1, 1).intersects(edge));
        QApplication::activePopupWidget()->close();
        EXPECT_TRUE(runUntil([] { return QApplication::activePopupWidget() == nullptr; }));
    }
}

}  // namespace

}  // namespace tarvik::tests
