// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtStack.h"

#include <QBoxLayout>

#include "platform/linux/windows/QtLabel.h"
#include "platform/linux/windows/Scaling.h"
#include "platform/linux/windows/WidgetLayout.h"

namespace tarvik::linuxdesktop {

namespace {

bool stretches(const QWidget& widget) {
    return (widget.sizePolicy().horizontalPolicy() & QSizePolicy::ExpandFlag) != 0;
}

// The alignment of a view across the direction of its stack.
Qt::Alignment across(const platform::StackDescription& stack, const QWidget& widget) {
    if (stack.orientation == platform::Orientation::horizontal) {
        return Qt::AlignVCenter;
    }
    if (stretches(widget)) {
        return {};
    }
    return stack.alignment == platform::StackAlignment::centerX ? Qt::AlignHCenter : Qt::AlignLeft;
}

}  // namespace

QtStack::QtStack(const platform::StackDescription& description) : views_(description.views) {
    const bool isRow = description.orientation == platform::Orientation::horizontal;
    auto* layout = new QBoxLayout(isRow ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom, this);
    layout->setSpacing(pixels(description.spacing));
    const platform::EdgeInsets& insets = description.edgeInsets;
    layout->setContentsMargins(pixels(insets.left), pixels(insets.top), pixels(insets.right),
                               pixels(insets.bottom));
    if (!isRow && description.alignment == platform::StackAlignment::centerX) {
        layout->addStretch(1);
    }
    bool hasStretching = false;
    for (const std::shared_ptr<platform::View>& view : views_) {
        QWidget& widget = widgetOf(*view);
        layout->addWidget(&widget, 0, across(description, widget));
        hasStretching = hasStretching || stretches(widget);
    }
    if (!isRow) {
        layout->addStretch(1);
    }
    if (isRow) {
        relateRow();
    } else {
        relateColumn();
    }
    setSizePolicy(hasStretching ? QSizePolicy::Expanding : QSizePolicy::Preferred,
                  QSizePolicy::Preferred);
}

template <typename Kind>
std::vector<Kind*> QtStack::viewsOf() const {
    std::vector<Kind*> found;
    for (const std::shared_ptr<platform::View>& view : views_) {
        if (auto* one = dynamic_cast<Kind*>(view.get())) {
            found.push_back(one);
        }
    }
    return found;
}

std::vector<QWidget*> QtStack::controls() const {
    std::vector<QWidget*> found = viewsOf<QWidget>();
    std::erase_if(found,
                  [](const QWidget* widget) { return widget->focusPolicy() == Qt::NoFocus; });
    return found;
}

void QtStack::relateRow() {
    const std::vector<QWidget*> all = controls();
    const std::vector<QtLabel*> labels = viewsOf<QtLabel>();
    if (all.empty() || labels.empty()) {
        return;
    }
    labels.front()->setBuddy(all.front());
    for (std::size_t index = 1; index < labels.size(); ++index) {
        for (QWidget* control : all) {
            labels[index]->describe(*control);
        }
    }
}

void QtStack::relateColumn() {
    const QtStack* above = nullptr;
    for (const std::shared_ptr<platform::View>& view : views_) {
        const auto* row = dynamic_cast<const QtStack*>(view.get());
        if (above != nullptr && row != nullptr && row->controls().empty()) {
            for (QtLabel* label : row->viewsOf<QtLabel>()) {
                for (QWidget* control : above->controls()) {
                    label->describe(*control);
                }
            }
        }
        above = row;
    }
}

QtStack::~QtStack() {
    // The views may have other owners, so Qt must not destroy them with this widget.
    for (const std::shared_ptr<platform::View>& view : views_) {
        widgetOf(*view).setParent(nullptr);
    }
}

}  // namespace tarvik::linuxdesktop
