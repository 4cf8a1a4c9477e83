// SPDX-License-Identifier: MIT

#include "tests/support/SimulatedViews.h"

#include <array>
#include <cstdio>

namespace tarvik::simulated {

namespace {

std::string number(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%g", value);
    return text.data();
}

std::string quoted(const std::string& text) {
    std::string quotedText = "\"";
    for (const char character : text) {
        quotedText += character == '\n' ? std::string("\\n") : std::string(1, character);
    }
    return quotedText + "\"";
}

std::string words(const platform::Color& color) {
    if (const auto* system = std::get_if<platform::SystemColor>(&color)) {
        constexpr std::array names = {"label", "secondaryLabel", "tertiaryLabel", "green", "red"};
        return names.at(static_cast<std::size_t>(*system));
    }
    const auto& rgb = std::get<platform::RgbColor>(color);
    return "rgb(" + number(rgb.red) + ", " + number(rgb.green) + ", " + number(rgb.blue) + ", " +
           number(rgb.alpha) + ")";
}

std::string words(const platform::Font& font) {
    constexpr std::array names = {"regular", "medium", "semibold", "bold"};
    return number(font.size) + " " + names.at(static_cast<std::size_t>(font.weight));
}

template <typename Number>
std::string words(const char* name, const std::optional<Number>& value) {
    return value ? std::string(", ") + name + " " + number(*value) : std::string();
}

std::string words(const platform::ViewLayout& layout) {
    return words("width", layout.width) + words("at least", layout.minimumWidth) +
           words("height", layout.height) + words("hugging", layout.horizontalContentHugging) +
           words("compression", layout.horizontalCompressionResistance);
}

}  // namespace

std::string SimulatedView::tree(std::size_t level) const {
    std::string text = std::string(2 * level, ' ') + description() + "\n";
    for (const std::shared_ptr<SimulatedView>& child : children()) {
        text += child->tree(level + 1);
    }
    return text;
}

std::string SimulatedLabel::description() const {
    constexpr std::array wrappings = {"", ", wraps when narrow", ", wraps"};
    return "label " + quoted(look.text) + ", " + words(look.font) + ", " + words(look.color) +
           (look.alignment == platform::TextAlignment::center ? ", centred" : "") +
           wrappings.at(static_cast<std::size_t>(look.wrapping)) +
           words("at most", look.preferredMaxLayoutWidth) + words(look.layout);
}

std::string SimulatedTextField::description() const {
    return std::string(look.isSecure ? "secure field " : "field ") + quoted(look.text) +
           ", placeholder " + quoted(look.placeholder) + ", called " +
           quoted(look.accessibilityLabel) + words(look.layout);
}

std::string SimulatedButton::description() const {
    return "button " + quoted(look.title) + ", action " + quoted(look.actionName) +
           (look.accessibilityLabel.empty() ? "" : ", called " + quoted(look.accessibilityLabel)) +
           ", bezel " + std::to_string(static_cast<int>(look.bezelStyle)) + ", control size " +
           std::to_string(static_cast<int>(look.controlSize)) +
           (look.isBordered ? "" : ", borderless") +
           (look.contentTintColor ? ", tint " + words(*look.contentTintColor) : "") +
           (look.font ? ", " + words(*look.font) : "") + words(look.layout) +
           (attributedTitle ? ", title " + words(attributedTitle->foregroundColor) + " " +
                                  words(attributedTitle->font)
                            : "") +
           (bezelColor ? ", bezel colour " + words(*bezelColor) : "");
}

std::string SimulatedCheckbox::description() const {
    return "checkbox " + quoted(look.title) + ", action " + quoted(look.actionName) +
           (look.isOn ? ", on" : ", off");
}

std::string SimulatedImageView::description() const {
    return "image " + (image ? quoted(image->name) : std::string("none")) + ", scaling " +
           std::to_string(static_cast<int>(look.scaling)) + words(look.layout);
}

std::string SimulatedSpacer::description() const {
    return "spacer" + words(layout_);
}

std::string SimulatedStack::description() const {
    const platform::EdgeInsets& insets = look_.edgeInsets;
    return std::string("stack ") +
           (look_.orientation == platform::Orientation::vertical ? "vertical" : "horizontal") +
           ", alignment " + std::to_string(static_cast<int>(look_.alignment)) + ", spacing " +
           number(look_.spacing) +
           (insets == platform::EdgeInsets()
                ? ""
                : ", insets " + number(insets.top) + " " + number(insets.left) + " " +
                      number(insets.bottom) + " " + number(insets.right));
}

std::vector<std::shared_ptr<SimulatedView>> SimulatedStack::children() const {
    std::vector<std::shared_ptr<SimulatedView>> views;
    for (const std::shared_ptr<platform::View>& view : look_.views) {
        views.push_back(std::dynamic_pointer_cast<SimulatedView>(view));
    }
    return views;
}

}  // namespace tarvik::simulated
