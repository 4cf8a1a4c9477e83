// SPDX-License-Identifier: MIT

#include "platform/linux/kwin/ForeignShortcuts.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace tarvik::linuxdesktop {

namespace {

// The words of a line in the note stand between these.
constexpr char separator = '\t';
constexpr const char* takenWord = "taken";
constexpr const char* agreedWord = "agreed";

bool isWord(const std::string& text) {
    return !text.empty() && text.find_first_of("\t\n") == std::string::npos;
}

bool has(const std::vector<GlobalAccel::Sequence>& keys, std::int32_t key) {
    return std::ranges::find(keys, GlobalAccel::Sequence{key}) != keys.end();
}

// KDE keeps them in any order.
bool isSame(std::vector<GlobalAccel::Sequence> one, std::vector<GlobalAccel::Sequence> other) {
    std::ranges::sort(one);
    std::ranges::sort(other);
    return one == other;
}

}  // namespace

std::vector<GlobalAccel::Sequence> ForeignShortcuts::without(std::int32_t key,
                                                             std::vector<Sequence> keys) {
    std::erase(keys, Sequence{key});
    return keys;
}

std::vector<ForeignShortcuts::Entry> ForeignShortcuts::entries() const {
    std::vector<Entry> found;
    for (const std::string& line : note_.lines().value_or(std::vector<std::string>{})) {
        std::istringstream stream(line);
        std::string state;
        std::string key;
        Entry entry;
        std::getline(stream, state, separator);
        std::getline(stream, key, separator);
        std::getline(stream, entry.owner.program, separator);
        std::getline(stream, entry.owner.name, separator);
        entry.isTaken = state == takenWord;
        std::istringstream(key) >> entry.key;
        for (Sequence sequence{};
             stream >> sequence[0] >> sequence[1] >> sequence[2] >> sequence[3];) {
            entry.keys.push_back(sequence);
        }
        // A line that somebody else has written takes nothing and gives nothing.
        if ((entry.isTaken || state == agreedWord) && entry.key != 0 &&
            has(entry.keys, entry.key) && isWord(entry.owner.program) && isWord(entry.owner.name)) {
            found.push_back(std::move(entry));
        }
    }
    return found;
}

bool ForeignShortcuts::write(const std::vector<Entry>& entries) const {
    if (entries.empty()) {
        note_.remove();
        return true;
    }
    std::vector<std::string> lines;
    for (const Entry& entry : entries) {
        std::string line = std::string(entry.isTaken ? takenWord : agreedWord) + separator +
                           std::to_string(entry.key) + separator + entry.owner.program + separator +
                           entry.owner.name + separator;
        for (const Sequence& sequence : entry.keys) {
            for (const std::int32_t key : sequence) {
                line += std::to_string(key) + ' ';
            }
        }
        lines.push_back(std::move(line));
    }
    return note_.write(lines);
}

bool ForeignShortcuts::replace(const Entry& entry, const std::optional<Entry>& changed) const {
    std::vector<Entry> all = entries();
    std::erase_if(all, [&entry](const Entry& other) {
        return other.key == entry.key && other.owner == entry.owner;
    });
    if (changed) {
        all.push_back(*changed);
    }
    return write(all);
}

bool ForeignShortcuts::isAgreed(const GlobalAccel::Action& owner, std::int32_t key) const {
    return std::ranges::any_of(entries(), [&owner, key](const Entry& entry) {
        return !entry.isTaken && entry.key == key && entry.owner == owner;
    });
}

void ForeignShortcuts::change(
    const GlobalAccel::Action& owner, const std::vector<Sequence>& keys,
    std::function<void(const std::optional<std::vector<Sequence>>& present)> onDone) {
    globalAccel_.setKeys(owner, keys, [this, owner, onDone = std::move(onDone)] {
        globalAccel_.askKeys(owner, onDone);
    });
}

void ForeignShortcuts::take(const GlobalAccel::Action& owner, std::int32_t key,
                            std::function<void(bool isTaken)> onDone) {
    if (!isWord(owner.program) || !isWord(owner.name)) {
        onDone(false);
        return;
    }
    globalAccel_.askKeys(owner, [this, owner, key, onDone = std::move(onDone)](const auto& had) {
        if (!had || !has(*had, key)) {
            onDone(false);
            return;
        }
        const Entry entry{true, key, owner, *had};
        // Without the note nothing is taken: it could not be given back.
        if (!replace(entry, entry)) {
            onDone(false);
            return;
        }
        change(owner, without(key, *had),
               [key, onDone](const auto& present) { onDone(present && !has(*present, key)); });
    });
}

void ForeignShortcuts::giveBack(std::function<void()> onDone) {
    std::vector<Entry> taken = entries();
    std::erase_if(taken, [](const Entry& entry) { return !entry.isTaken; });
    giveBackNext(std::move(taken), std::move(onDone));
}

// One after the other: one owner may have given up several keys.
void ForeignShortcuts::giveBackNext(std::vector<Entry> left, std::function<void()> onDone) {
    if (left.empty()) {
        onDone();
        return;
    }
    const Entry entry = std::move(left.back());
    left.pop_back();
    giveBackOne(entry, [this, left = std::move(left), onDone = std::move(onDone)] {
        giveBackNext(left, onDone);
    });
}

void ForeignShortcuts::giveBackOne(const Entry& entry, std::function<void()> onDone) {
    globalAccel_.askKeys(entry.owner,
                         [this, entry, onDone = std::move(onDone)](const auto& present) {
                             if (!present) {
                                 // The next run gives the key back.
                                 onDone();
                                 return;
                             }
                             if (has(*present, entry.key)) {
                                 replace(entry, std::nullopt);
                                 onDone();
                                 return;
                             }
                             std::vector<Sequence> keys = entry.keys;
                             // The user may have given the owner other keys meanwhile.
                             if (!isSame(*present, without(entry.key, entry.keys))) {
                                 keys = *present;
                                 keys.push_back({entry.key});
                             }
                             change(entry.owner, keys, [this, entry, onDone](const auto& changed) {
                                 if (changed && has(*changed, entry.key)) {
                                     Entry agreed = entry;
                                     agreed.isTaken = false;
                                     replace(entry, agreed);
                                 }
                                 onDone();
                             });
                         });
}

}  // namespace tarvik::linuxdesktop
