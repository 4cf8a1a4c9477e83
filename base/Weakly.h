// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace tarvik {

/// Makes a callable that holds `owner` weakly and does nothing once the owner is gone.
///
/// `action` is a member function of the owner, or a callable that takes a reference to the owner as
/// its first argument. The arguments of the call follow. The owner stays alive while the action
/// runs. The owner's type derives from std::enable_shared_from_this and a shared_ptr holds the
/// owner.
template <typename Owner, typename Action>
auto weakly(Owner& owner, Action action) {
    return [weakOwner =
                std::weak_ptr<Owner>(std::static_pointer_cast<Owner>(owner.shared_from_this())),
            action = std::move(action)](auto&&... arguments) {
        if (const std::shared_ptr<Owner> strongOwner = weakOwner.lock()) {
            std::invoke(action, *strongOwner, std::forward<decltype(arguments)>(arguments)...);
        }
    };
}

}  // namespace tarvik
