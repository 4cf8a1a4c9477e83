// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/kwin/GlobalAccel.h"
#include "platform/linux/settings/TakenShortcuts.h"

namespace tarvik::linuxdesktop {

/// The keys that actions of other programs give up for this one in KDE, with the user's consent,
/// and get back. A note of the user has them. Loop thread only. The operations wait for the disk,
/// and for nobody else; every callback comes in a later turn, unless there is nothing to do.
class ForeignShortcuts {
  public:
    /// `globalAccel` outlives the object's callbacks.
    explicit ForeignShortcuts(GlobalAccel& globalAccel) : globalAccel_(globalAccel) {}
    ForeignShortcuts(const ForeignShortcuts&) = delete;
    ForeignShortcuts& operator=(const ForeignShortcuts&) = delete;

    /// Whether the user has agreed that `owner` gives `key` up, and `owner` has got the key back
    /// since, as at the end of an earlier run.
    bool isAgreed(const GlobalAccel::Action& owner, std::int32_t key) const;
    /// Takes `key` from `owner`, whose other keys stay. `onDone` hears whether `owner` has given
    /// the key up. One call after the other: one owner may have several keys.
    void take(const GlobalAccel::Action& owner, std::int32_t key,
              std::function<void(bool isTaken)> onDone);
    /// Gives every taken key back. An owner whom the user has given the key again keeps the key for
    /// good: the agreement ends.
    void giveBack(std::function<void()> onDone);

  private:
    using Sequence = GlobalAccel::Sequence;
    struct Entry {
        // The owner is without the key. Otherwise the user has agreed, and the owner has the key.
        bool isTaken = false;
        std::int32_t key = 0;
        GlobalAccel::Action owner;
        // What the owner had.
        std::vector<Sequence> keys;
    };

    std::vector<Entry> entries() const;
    bool write(const std::vector<Entry>& entries) const;
    void giveBackNext(std::vector<Entry> left, std::function<void()> onDone);
    void giveBackOne(const Entry& entry, std::function<void()> onDone);
    // Tells the keys that the owner has afterwards. Empty when nobody answers.
    void change(const GlobalAccel::Action& owner, const std::vector<Sequence>& keys,
                std::function<void(const std::optional<std::vector<Sequence>>& present)> onDone);
    // Removes the entry of this owner and key, and adds `changed` in its place.
    bool replace(const Entry& entry, const std::optional<Entry>& changed) const;
    static std::vector<Sequence> without(std::int32_t key, std::vector<Sequence> keys);

    GlobalAccel& globalAccel_;
    const TakenShortcuts note_{"kde-shortcuts"};
};

}  // namespace tarvik::linuxdesktop
