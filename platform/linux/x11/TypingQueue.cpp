// SPDX-License-Identifier: MIT

#include "platform/linux/x11/TypingQueue.h"

#include <set>
#include <utility>

namespace tarvik::linuxdesktop {

void TypingQueue::push(TypedText text, xcb_window_t window, std::function<void()> onTyped) {
    if (!items_.empty() && items_.back().text.process == text.process &&
        items_.back().window == window) {
        items_.back().text.characters += text.characters;
        items_.back().onTyped.push_back(std::move(onTyped));
        items_.back().posted = std::chrono::steady_clock::now();
    } else {
        items_.push_back({std::move(text), window, {std::move(onTyped)}});
    }
}

std::optional<TypingQueue::Item> TypingQueue::take(const IsRead& isRead) {
    const auto found = findNext(isRead);
    if (found == items_.end()) {
        return std::nullopt;
    }
    Item item = *found;
    items_.erase(found);
    item.waitsFor = XCB_NONE;
    return item;
}

std::vector<TypingQueue::Item> TypingQueue::takeWaitingFor(xcb_window_t window) {
    std::vector<Item> taken;
    std::set<std::optional<platform::ProcessIdentifier>> processes;
    for (auto item = items_.begin(); item != items_.end();) {
        if (item->waitsFor == window) {
            processes.insert(item->text.process);
        }
        if (processes.contains(item->text.process)) {
            taken.push_back(std::move(*item));
            item = items_.erase(item);
        } else {
            ++item;
        }
    }
    return taken;
}

std::size_t TypingQueue::drop(const std::vector<Item>& items) {
    std::size_t lost = 0;
    for (const Item& item : items) {
        lost += item.text.characters.size() - item.position;
        for (const auto& onTyped : item.onTyped) {
            onTyped();
        }
    }
    return lost;
}

// A text for whatever has the keyboard may be for any process, so it overtakes nothing, and nothing
// overtakes it.
std::deque<TypingQueue::Item>::const_iterator TypingQueue::findNext(const IsRead& isRead) const {
    std::set<platform::ProcessIdentifier> waiting;
    for (auto item = items_.begin(); item != items_.end(); ++item) {
        const bool isReady = item->waitsFor == XCB_NONE || isRead(item->waitsFor);
        const auto process = item->text.process;
        if (!process) {
            return isReady && waiting.empty() ? item : items_.end();
        }
        if (isReady && !waiting.contains(*process)) {
            return item;
        }
        waiting.insert(*process);
    }
    return items_.end();
}

}  // namespace tarvik::linuxdesktop
