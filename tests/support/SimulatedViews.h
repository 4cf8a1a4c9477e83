// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Views.h"
#include "tests/support/SimulatedImage.h"

namespace tarvik::simulated {

/// A view that can describe itself and its subviews as text.
class SimulatedView {
  public:
    virtual ~SimulatedView() = default;

    /// One line, without a line break, with every value that a user would see.
    virtual std::string description() const = 0;
    virtual std::vector<std::shared_ptr<SimulatedView>> children() const { return {}; }

    /// The description of this view and of its subviews, indented by two spaces per level.
    std::string tree(std::size_t level = 0) const;
};

class SimulatedLabel final : public platform::Label, public SimulatedView {
  public:
    explicit SimulatedLabel(platform::LabelDescription description)
        : look(std::move(description)) {}

    void setText(const std::string& text) override { look.text = text; }
    void setTextColor(platform::Color color) override { look.color = color; }
    std::string description() const override;

    platform::LabelDescription look;
};

class SimulatedTextField final : public platform::TextField, public SimulatedView {
  public:
    explicit SimulatedTextField(platform::TextFieldDescription description)
        : look(std::move(description)) {}

    std::string text() const override { return look.text; }
    std::string description() const override;

    /// The user replaces the text.
    void type(std::string text) { look.text = std::move(text); }

    platform::TextFieldDescription look;
};

class SimulatedButton final : public platform::Button, public SimulatedView {
  public:
    explicit SimulatedButton(platform::ButtonDescription description)
        : look(std::move(description)) {}

    std::string title() const override { return look.title; }
    void setAttributedTitle(const platform::AttributedTitle& title) override {
        look.title = title.text;
        attributedTitle = title;
    }
    void setBezelColor(platform::Color color) override { bezelColor = color; }
    std::string description() const override;

    /// The user clicks the button. The action may destroy the view, so a copy of it runs.
    void press() {
        const std::function<void()> action = look.action;
        action();
    }

    platform::ButtonDescription look;
    std::optional<platform::AttributedTitle> attributedTitle;
    std::optional<platform::Color> bezelColor;
};

class SimulatedCheckbox final : public platform::Checkbox, public SimulatedView {
  public:
    explicit SimulatedCheckbox(platform::CheckboxDescription description)
        : look(std::move(description)) {}

    bool isOn() const override { return look.isOn; }
    void setOn(bool isOn) override { look.isOn = isOn; }
    std::string description() const override;

    void click() {
        look.isOn = !look.isOn;
        look.action(*this);
    }

    platform::CheckboxDescription look;
};

class SimulatedImageView final : public platform::View, public SimulatedView {
  public:
    explicit SimulatedImageView(const platform::ImageViewDescription& description)
        : look(description), image(std::dynamic_pointer_cast<SimulatedImage>(description.image)) {}

    std::string description() const override;

    const platform::ImageViewDescription look;
    const std::shared_ptr<SimulatedImage> image;
};

class SimulatedSeparator final : public platform::View, public SimulatedView {
  public:
    std::string description() const override { return "separator"; }
};

class SimulatedSpacer final : public platform::View, public SimulatedView {
  public:
    explicit SimulatedSpacer(const platform::ViewLayout& layout) : layout_(layout) {}

    std::string description() const override;

  private:
    platform::ViewLayout layout_;
};

class SimulatedStack final : public platform::View, public SimulatedView {
  public:
    explicit SimulatedStack(platform::StackDescription description)
        : look_(std::move(description)) {}

    std::string description() const override;
    std::vector<std::shared_ptr<SimulatedView>> children() const override;

  private:
    platform::StackDescription look_;
};

}  // namespace tarvik::simulated
