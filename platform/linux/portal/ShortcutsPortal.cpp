// SPDX-License-Identifier: MIT

#include "platform/linux/portal/ShortcutsPortal.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/linux/bus/BusReplies.h"
#include "platform/linux/portal/PortalReplies.h"

namespace tarvik::linuxdesktop {

namespace {

using namespace std::chrono_literals;

constexpr auto offerTimeout = 900ms;
// At the login the portal may be busy for long.
constexpr auto callTimeout = 20s;
// Without a question to the user.
constexpr auto responseTimeout = 5s;
constexpr auto closeTimeout = 300ms;
// A portal may tell of the shortcuts only after a response without them.
constexpr auto changeTimeout = 1s;
// The portal may see a new desktop file a little later.
constexpr auto registrationInterval = 300ms;
constexpr int maxRegistrations = 3;

constexpr const char* applicationId = "com.tarvik.dictate";
constexpr const char* shortcutsInterface = "org.freedesktop.portal.GlobalShortcuts";
constexpr const char* requestInterface = "org.freedesktop.portal.Request";
constexpr const char* sessionInterface = "org.freedesktop.portal.Session";
const BusObject portal{ShortcutsPortal::busName, "/org/freedesktop/portal/desktop"};

// The code of a response.
constexpr std::uint32_t cancelledByUser = 1;

std::string signalRule(const char* interfaceName, const std::string& more = "") {
    return "type='signal',sender='" + std::string(ShortcutsPortal::busName) + "',interface='" +
           interfaceName + "'" + more;
}

}  // namespace

ShortcutsPortal::Offer ShortcutsPortal::offer(MessageBus& bus) {
    // A late reply finds nobody waiting.
    const auto known = std::make_shared<std::optional<Offer>>();
    bus.call(bus.newPropertyCall(portal, shortcutsInterface, "version"), offerTimeout,
             [known](sd_bus_message* reply) {
                 *known = isNoReply(reply)                            ? Offer::unanswered
                          : unsignedPropertyIn(reply).value_or(0) > 0 ? Offer::present
                                                                      : Offer::absent;
             });
    bus.dispatchUntil([known] { return known->has_value(); },
                      std::chrono::steady_clock::now() + offerTimeout);
    return known->value_or(Offer::unanswered);
}

ShortcutsPortal::ShortcutsPortal(MessageBus& bus, EventLoop& loop, platform::Log& log,
                                 Events events)
    : bus_(bus),
      events_(std::move(events)),
      desktopFile_(
          log, {applicationId, "", "the portal", "no installed desktop file tells the portal of"}),
      deadline_(loop) {
    bus_.observe(signalRule(requestInterface, ",member='Response'"),
                 [this](sd_bus_message* signal) { handleResponse(signal); });
    bus_.observe(signalRule(sessionInterface, ",member='Closed'"),
                 [this](sd_bus_message* signal) { handleClosed(signal); });
    bus_.observe(signalRule(shortcutsInterface), [this](sd_bus_message* signal) {
        const std::string_view member = sd_bus_message_get_member(signal);
        if (member == "Activated") {
            handleKey(signal, events_.onActivated);
        } else if (member == "Deactivated") {
            handleKey(signal, events_.onDeactivated);
        } else if (member == "ShortcutsChanged") {
            handleChange(signal);
        }
    });
    bus_.observe("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
                     std::string(busName) + "'",
                 [this](sd_bus_message* signal) { handleOwnerChange(signal); });
}

void ShortcutsPortal::bind(std::vector<Shortcut> shortcuts) {
    shortcuts_ = std::move(shortcuts);
    if (step_ == Step::registering) {
        return;
    }
    close([] {});
    registrationsLeft_ = maxRegistrations;
    registerApplication();
}

void ShortcutsPortal::close(const std::function<void()>& onDone) {
    const std::string closed = session_;
    reset();
    if (closed.empty() || !bus_.call(bus_.newCall({busName, closed}, sessionInterface, "Close"),
                                     closeTimeout, [onDone](sd_bus_message*) { onDone(); })) {
        onDone();
    }
}

void ShortcutsPortal::reset() {
    ++generation_;
    session_.clear();
    token_.clear();
    step_ = Step::none;
    deadline_.clear();
}

void ShortcutsPortal::end(const std::string& reason) {
    reset();
    events_.onEnded(reason);
}

void ShortcutsPortal::registerApplication() {
    if (isRegistered_) {
        createSession();
        return;
    }
    step_ = Step::registering;
    desktopFile_.makeUnlessInstalled();
    bus_.call(bus_.newCall(portal, "org.freedesktop.host.portal.Registry", "Register", "sa{sv}",
                           applicationId, 0),
              callTimeout, [this, generation = generation_](sd_bus_message* reply) {
                  handleRegistration(reply, generation == generation_);
              });
}

// Old portals have no register of applications, and need none.
void ShortcutsPortal::handleRegistration(sd_bus_message* reply, bool isWanted) {
    if (!isError(reply) || sd_bus_message_is_method_error(reply, SD_BUS_ERROR_UNKNOWN_METHOD) > 0 ||
        sd_bus_message_is_method_error(reply, SD_BUS_ERROR_UNKNOWN_INTERFACE) > 0) {
        isRegistered_ = true;
        setOwner(reply);
    }
    if (!isWanted) {
        return;
    }
    if (isRegistered_) {
        createSession();
    } else if (isNoReply(reply) || isNobodyThere(reply) || --registrationsLeft_ == 0) {
        end(errorTextOf(reply));
    } else {
        deadline_.set(registrationInterval, [this] { registerApplication(); });
    }
}

void ShortcutsPortal::setOwner(sd_bus_message* reply) {
    if (const char* sender = sd_bus_message_get_sender(reply)) {
        owner_ = sender;
    }
}

BusMessage ShortcutsPortal::newCall(const char* member) {
    return bus_.newCall(portal, shortcutsInterface, member);
}

std::string ShortcutsPortal::newToken() {
    return "tarvik" + std::to_string(++lastToken_);
}

void ShortcutsPortal::appendShortcuts(sd_bus_message* call) const {
    sd_bus_message_open_container(call, 'a', "(sa{sv})");
    for (const Shortcut& shortcut : shortcuts_) {
        sd_bus_message_append(call, "(sa{sv})", shortcut.name.c_str(), 2, "description", "s",
                              shortcut.description.c_str(), "preferred_trigger", "s",
                              shortcut.trigger.c_str());
    }
    sd_bus_message_close_container(call);
}

void ShortcutsPortal::createSession() {
    token_ = newToken();
    BusMessage call = newCall("CreateSession");
    if (call) {
        sd_bus_message_open_container(call.get(), 'a', "{sv}");
        sd_bus_message_append(call.get(), "{sv}", "handle_token", "s", token_.c_str());
        sd_bus_message_append(call.get(), "{sv}", "session_handle_token", "s", newToken().c_str());
        // Some portals take the shortcuts here.
        sd_bus_message_open_container(call.get(), 'e', "sv");
        sd_bus_message_append(call.get(), "s", "shortcuts");
        sd_bus_message_open_container(call.get(), 'v', "a(sa{sv})");
        appendShortcuts(call.get());
        sd_bus_message_close_container(call.get());
        sd_bus_message_close_container(call.get());
        sd_bus_message_close_container(call.get());
    }
    request(std::move(call), Step::creating);
}

void ShortcutsPortal::bindShortcuts() {
    token_ = newToken();
    BusMessage call = newCall("BindShortcuts");
    if (call) {
        sd_bus_message_append(call.get(), "o", session_.c_str());
        appendShortcuts(call.get());
        sd_bus_message_append(call.get(), "sa{sv}", "", 1, "handle_token", "s", token_.c_str());
    }
    // The user may take any time to answer.
    deadline_.clear();
    request(std::move(call), Step::binding);
}

void ShortcutsPortal::request(BusMessage call, Step step) {
    step_ = step;
    bus_.call(std::move(call), callTimeout,
              [this, generation = generation_](sd_bus_message* reply) {
                  if (generation != generation_) {
                      return;
                  }
                  if (isError(reply)) {
                      end(errorTextOf(reply));
                      return;
                  }
                  setOwner(reply);
                  if (step_ == Step::creating) {
                      deadline_.set(responseTimeout,
                                    [this] { end("the desktop's portal does not answer"); });
                  }
              });
}

bool ShortcutsPortal::isFromPortal(sd_bus_message* signal) const {
    const char* sender = sd_bus_message_get_sender(signal);
    return sender != nullptr && sender == owner_;
}

void ShortcutsPortal::handleResponse(sd_bus_message* signal) {
    const std::string_view path = sd_bus_message_get_path(signal);
    std::uint32_t code = 0;
    if (token_.empty() || !path.ends_with("/" + token_) || !isFromPortal(signal)) {
        return;
    }
    token_.clear();
    if (sd_bus_message_read(signal, "u", &code) <= 0) {
        end("the desktop's portal answers what nobody understands");
    } else if (step_ == Step::creating) {
        handleSession(code, signal);
    } else {
        handleBound(code, signal);
    }
}

void ShortcutsPortal::handleSession(std::uint32_t code, sd_bus_message* signal) {
    session_ = sessionIn(signal);
    if (code != 0 || session_.empty()) {
        end("the desktop's portal makes no session for shortcuts");
        return;
    }
    bindShortcuts();
}

// Some portals report a failure for what they have bound. So the list decides, and not the code.
void ShortcutsPortal::handleBound(std::uint32_t code, sd_bus_message* signal) {
    const Names names = boundNamesIn(signal);
    const std::string reason = code == cancelledByUser
                                   ? "the user has refused it in the desktop's dialog"
                                   : "the desktop's portal does not give it";
    if (names.empty() && code != cancelledByUser) {
        deadline_.set(changeTimeout, [this, reason] {
            step_ = Step::none;
            events_.onBound({}, reason);
        });
        return;
    }
    step_ = Step::none;
    events_.onBound(names, reason);
}

void ShortcutsPortal::handleChange(sd_bus_message* signal) {
    const char* session = nullptr;
    if (!isFromPortal(signal) || sd_bus_message_read(signal, "o", &session) <= 0 ||
        session != session_) {
        return;
    }
    const Names names = shortcutNamesIn(signal);
    // The user may still be asked.
    if (names.empty() && step_ == Step::binding) {
        return;
    }
    deadline_.clear();
    step_ = Step::none;
    token_.clear();
    events_.onBound(names, "it was taken away in the desktop's settings");
}

void ShortcutsPortal::handleKey(sd_bus_message* signal,
                                const std::function<void(const std::string&)>& onKey) {
    const char* session = nullptr;
    const char* name = nullptr;
    if (isFromPortal(signal) && sd_bus_message_read(signal, "os", &session, &name) > 0 &&
        !session_.empty() && session == session_) {
        onKey(name);
    }
}

void ShortcutsPortal::handleClosed(sd_bus_message* signal) {
    if (!session_.empty() && isFromPortal(signal) && session_ == sd_bus_message_get_path(signal)) {
        end("the desktop's portal has taken the hotkeys away");
    }
}

void ShortcutsPortal::handleOwnerChange(sd_bus_message* signal) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* now = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &now) <= 0) {
        return;
    }
    if (*before != '\0' && owner_ == before) {
        isRegistered_ = false;
        if (step_ != Step::none || !session_.empty()) {
            end("the desktop's portal is gone");
        }
    }
    owner_ = now;
    if (*now != '\0' && step_ == Step::none && session_.empty()) {
        events_.onStarted();
    }
}

}  // namespace tarvik::linuxdesktop
