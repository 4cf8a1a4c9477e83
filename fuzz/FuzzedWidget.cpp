// SPDX-License-Identifier: MIT

#include "fuzz/FuzzedWidget.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/Text.h"

namespace tarvik::fuzz {

namespace {

constexpr const char* texts[] = {"", "abc", "Grüße", "a😀b", "日本語 text", "x\ny"};
constexpr const char* toolkits[] = {"gtk", "Qt", "VCL", "J2SE"};
constexpr std::uint32_t textRole = 61;
constexpr std::uint32_t passwordRole = 40;
constexpr std::uint32_t editableState = 1U << 7U;
constexpr std::uint32_t readOnlyState = 1U << (43U - 32U);

bool isHigh(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool isLow(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

char32_t joined(char32_t high, char32_t low) {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

void appendUtf8(std::string& text, char32_t character) {
    // Half of a pair cannot be sent.
    const char32_t sent = isHigh(character) || isLow(character) ? U'\uFFFD' : character;
    if (sent < 0x80) {
        text += static_cast<char>(sent);
        return;
    }
    const int more = sent < 0x800 ? 1 : sent < 0x10000 ? 2 : 3;
    constexpr unsigned leads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(leads[more] | sent >> (6 * more));
    for (int left = more - 1; left >= 0; --left) {
        text += static_cast<char>(0x80 | (sent >> (6 * left) & 0x3F));
    }
}

}  // namespace

FuzzedWidget::FuzzedWidget(FuzzedDataProvider& input)
    : fault_(input.PickValueInArray({Fault::none, Fault::none, Fault::limit, Fault::cut,
                                     Fault::refusal, Fault::lie, Fault::late, Fault::unreadable,
                                     Fault::password, Fault::readOnly})),
      toolkit_(input.PickValueInArray(toolkits)),
      countsUtf16_(toolkit_ == "Qt" || toolkit_ == "VCL") {
    units_ = unitsOf(input.PickValueInArray(texts));
    // Between two characters: no program lets its caret stand inside one.
    const auto place = [&] {
        auto offset = input.ConsumeIntegralInRange<std::size_t>(0, units_.size());
        return offset < units_.size() && isLow(units_[offset]) ? offset - 1 : offset;
    };
    selectionStart_ = place();
    selectionEnd_ = std::max(selectionStart_, place());
    caret_ = input.ConsumeBool() ? selectionStart_ : selectionEnd_;
    limit_ = units_.size() + input.ConsumeIntegralInRange<std::size_t>(0, 4);
    before_ = textOf(units_.substr(0, selectionStart_));
    behind_ = textOf(units_.substr(selectionEnd_));
}

FuzzedWidget::Units FuzzedWidget::unitsOf(const std::string& text) const {
    Units units;
    for (const char16_t unit : utf16FromUtf8(text)) {
        if (!countsUtf16_ && isLow(unit) && !units.empty() && isHigh(units.back())) {
            units.back() = joined(units.back(), unit);
        } else {
            units += unit;
        }
    }
    return units;
}

std::string FuzzedWidget::textOf(const Units& units) {
    std::string text;
    for (std::size_t index = 0; index < units.size(); ++index) {
        if (isHigh(units[index]) && index + 1 < units.size() && isLow(units[index + 1])) {
            appendUtf8(text, joined(units[index], units[index + 1]));
            ++index;
        } else {
            appendUtf8(text, units[index]);
        }
    }
    return text;
}

bool FuzzedWidget::handle(sd_bus_message* call, const std::string& member) {
    if (const auto pending = std::exchange(pending_, nullptr)) {
        pending();
    }
    if (member == "Get") {
        replyWithProperty(call);
    } else if (member == "GetText") {
        replyWithText(call);
    } else if (member == "InsertText") {
        insert(call);
    } else if (member == "DeleteText") {
        remove(call);
    } else if (member == "GetInterfaces") {
        sd_bus_reply_method_return(call, "as", 2, "org.a11y.atspi.Text",
                                   "org.a11y.atspi.EditableText");
    } else if (member == "GetRole") {
        sd_bus_reply_method_return(call, "u", fault_ == Fault::password ? passwordRole : textRole);
    } else if (member == "GetState") {
        sd_bus_reply_method_return(call, "au", 2, editableState,
                                   fault_ == Fault::readOnly ? readOnlyState : 0U);
    } else if (member == "GetNSelections") {
        sd_bus_reply_method_return(call, "i", selectionEnd_ > selectionStart_ ? 1 : 0);
    } else if (member == "GetSelection") {
        sd_bus_reply_method_return(call, "ii", static_cast<int>(selectionStart_),
                                   static_cast<int>(selectionEnd_));
    } else if (member == "SetCaretOffset") {
        std::int32_t offset = 0;
        sd_bus_message_read(call, "i", &offset);
        caret_ = bounded(offset);
        sd_bus_reply_method_return(call, "b", 1);
    } else {
        return false;
    }
    return true;
}

void FuzzedWidget::replyWithProperty(sd_bus_message* call) {
    const char* interface = "";
    const char* name = "";
    sd_bus_message_read(call, "ss", &interface, &name);
    if (std::strcmp(name, "ToolkitName") == 0) {
        sd_bus_reply_method_return(call, "v", "s", toolkit_.c_str());
    } else {
        const bool isCount = std::strcmp(name, "CharacterCount") == 0;
        sd_bus_reply_method_return(call, "v", "i",
                                   static_cast<int>(isCount ? units_.size() : caret_));
    }
}

void FuzzedWidget::replyWithText(sd_bus_message* call) {
    std::int32_t start = 0;
    std::int32_t end = 0;
    sd_bus_message_read(call, "ii", &start, &end);
    const std::size_t from = bounded(start);
    const std::size_t length = std::max(bounded(end), from) - from;
    std::string text = textOf(units_.substr(from, length));
    if (fault_ == Fault::unreadable) {
        text.clear();
    } else if (fault_ == Fault::password) {
        text.assign(length, '*');
    }
    sd_bus_reply_method_return(call, "s", text.c_str());
}

std::size_t FuzzedWidget::bounded(std::int32_t offset) const {
    return offset < 0 ? units_.size() : std::min(static_cast<std::size_t>(offset), units_.size());
}

void FuzzedWidget::insert(sd_bus_message* call) {
    std::int32_t offset = 0;
    const char* text = "";
    std::int32_t length = 0;
    sd_bus_message_read(call, "isi", &offset, &text, &length);
    // Qt takes so many units, whatever is there; the other toolkits count bytes.
    const std::string whole(text);
    const Units inserted =
        toolkit_ == "Qt" ? unitsOf(whole).substr(0, static_cast<std::size_t>(std::max(length, 0)))
                         : unitsOf(whole.substr(0, static_cast<std::size_t>(std::max(length, 0))));
    const std::size_t place = bounded(offset);
    if (fault_ == Fault::late) {
        pending_ = [this, place, inserted] { insertNow(place, inserted); };
    } else if (fault_ != Fault::lie && fault_ != Fault::refusal) {
        insertNow(place, inserted);
    }
    sd_bus_reply_method_return(call, "b", fault_ == Fault::refusal ? 0 : 1);
}

void FuzzedWidget::insertNow(std::size_t offset, const Units& inserted) {
    const std::size_t room = limit_ - std::min(limit_, units_.size());
    if (fault_ == Fault::limit) {
        // As much as there is room for, in whole characters.
        std::size_t length = std::min(room, inserted.size());
        length -= length > 0 && length < inserted.size() && isLow(inserted[length]) ? 1 : 0;
        units_.insert(offset, inserted, 0, length);
        caret_ = offset + length;
        return;
    }
    units_.insert(offset, inserted);
    caret_ = offset + inserted.size();
    if (fault_ == Fault::cut && units_.size() > limit_) {
        units_.resize(limit_);
        caret_ = std::min(caret_, limit_);
    }
}

void FuzzedWidget::remove(sd_bus_message* call) {
    std::int32_t start = 0;
    std::int32_t end = 0;
    sd_bus_message_read(call, "ii", &start, &end);
    const std::size_t from = bounded(start);
    const std::size_t length = std::max(bounded(end), from) - from;
    if (fault_ != Fault::refusal) {
        units_.erase(from, length);
        caret_ = std::min(from, units_.size());
        selectionStart_ = selectionEnd_ = caret_;
    }
    sd_bus_reply_method_return(call, "b", fault_ == Fault::refusal ? 0 : 1);
}

}  // namespace tarvik::fuzz
