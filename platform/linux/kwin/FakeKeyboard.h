// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <memory>

#include "platform/linux/kwin/FakeInputProtocol.h"
#include "platform/linux/wayland/WaylandConnection.h"

namespace tarvik::linuxdesktop {

/// Keys that KWin takes for keys of a keyboard of the hardware. Loop thread only; requests are sent
/// with WaylandConnection::flush().
class FakeKeyboard {
  public:
    /// Whether KWin lets this process press keys. After the `onReady` of the connection.
    static bool isOffered(const WaylandConnection& connection) {
        return connection.offers(org_kde_kwin_fake_input_interface);
    }

    /// KWin lets this process press keys. `connection` outlives the object.
    explicit FakeKeyboard(WaylandConnection& connection);

    /// Presses or releases a key, as the kernel numbers keys.
    void key(std::uint32_t key, bool isDown);

  private:
    struct InputDestroyed {
        void operator()(org_kde_kwin_fake_input* input) const {
            org_kde_kwin_fake_input_destroy(input);
        }
    };

    std::unique_ptr<org_kde_kwin_fake_input, InputDestroyed> input_;
};

}  // namespace tarvik::linuxdesktop
