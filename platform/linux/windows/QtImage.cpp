// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtImage.h"

#include <utility>

#include "platform/linux/windows/Scaling.h"

namespace tarvik::linuxdesktop {

namespace {

// The usual size of an icon in a panel.
constexpr QSize symbolSize(22, 22);

}  // namespace

QtImage::QtImage(Symbol symbol, std::string accessibilityDescription)
    : symbol_(symbol),
      accessibilityDescription_(std::move(accessibilityDescription)),
      naturalSize_(symbolSize) {}

QtImage::QtImage(QIcon picture, QSize naturalSize)
    : picture_(std::move(picture)), naturalSize_(naturalSize) {}

QIcon QtImage::icon(const std::optional<QColor>& color) const {
    return symbol_ ? symbolIcon(*symbol_, color) : picture_;
}

QSize QtImage::naturalSize() const {
    return {pixels(naturalSize_.width()), pixels(naturalSize_.height())};
}

}  // namespace tarvik::linuxdesktop
