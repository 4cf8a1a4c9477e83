// SPDX-License-Identifier: MIT

#include "platform/linux/windows/QtWindow.h"

#include <QGuiApplication>
#include <QPalette>
#include <utility>

#include "platform/linux/windows/Mnemonics.h"
#include "platform/linux/windows/QtAppearance.h"
#include "platform/linux/windows/QtLabel.h"
#include "platform/linux/windows/Scaling.h"
#include "platform/linux/windows/ScreenGeometry.h"
#include "platform/linux/windows/WidgetLayout.h"
#include "platform/linux/windows/WindowManagerRequests.h"

namespace tarvik::linuxdesktop {

namespace {

Qt::WindowFlags windowFlags(const platform::WindowDescription& description) {
    const auto has = [&](std::uint32_t part) { return (description.styleMask & part) != 0; };
    Qt::WindowFlags flags = Qt::Window | Qt::CustomizeWindowHint;
    flags.setFlag(Qt::FramelessWindowHint, !has(platform::titledWindow));
    flags.setFlag(Qt::WindowTitleHint, has(platform::titledWindow));
    flags.setFlag(Qt::WindowSystemMenuHint, has(platform::titledWindow));
    flags.setFlag(Qt::WindowCloseButtonHint, has(platform::closableWindow));
    flags.setFlag(Qt::WindowMinimizeButtonHint, has(platform::miniaturizableWindow));
    flags.setFlag(Qt::WindowMaximizeButtonHint, has(platform::resizableWindow));
    flags.setFlag(Qt::WindowStaysOnTopHint, description.level == platform::WindowLevel::floating);
    return flags;
}

QSize pixelSize(const platform::Size& size) {
    return {pixels(size.width), pixels(size.height)};
}

// Keeps replaced content alive until the control that replaced it has returned from its callback.
class Retired final : public QObject {
  public:
    Retired(std::shared_ptr<platform::View> view, QObject& window)
        : QObject(&window), view_(std::move(view)) {
        deleteLater();
    }

  private:
    std::shared_ptr<platform::View> view_;
};

}  // namespace

QtWindow::QtWindow(platform::WindowDescription description) : description_(std::move(description)) {
    window_.setWindowFlags(windowFlags(description_));
    window_.setWindowTitle(QString::fromStdString(description_.title));
    window_.onClose = [this] { onClose(); };
    window_.onFrameChanged = [this] { correctPosition(); };
    window_.onContentChanged = [this] { fitUnlessResized(); };
    applyBackground(std::nullopt);
    // A dark title bar comes nearest to one through which a dark background shows.
    if (description_.titlebarAppearsTransparent && description_.backgroundColor &&
        qtColor(*description_.backgroundColor).lightnessF() < 0.5F) {
        preferDarkFrame(window_);
    }
    fit();
    center();
}

QtWindow::~QtWindow() {
    window_.onClose = nullptr;
    window_.onFrameChanged = nullptr;
    window_.onContentChanged = nullptr;
    window_.setContent(nullptr);
}

void QtWindow::setContent(std::shared_ptr<platform::View> root,
                          std::optional<platform::RgbColor> background) {
    giveMnemonics(widgetOf(*root));
    window_.setContent(&widgetOf(*root));
    describeWindow(widgetOf(*root));
    if (std::shared_ptr<platform::View> old = std::exchange(root_, std::move(root))) {
        new Retired(std::move(old), window_);
    }
    applyBackground(background);
    fit();
}

// The texts between the controls are passed by when somebody moves from control to control.
void QtWindow::describeWindow(const QWidget& content) {
    QStringList texts;
    const auto collect = [&texts](const QWidget* widget) {
        const auto* label = dynamic_cast<const QtLabel*>(widget);
        if (label != nullptr && label->wraps()) {
            texts += label->QLabel::text();
        }
    };
    collect(&content);
    for (const QWidget* widget : content.findChildren<QWidget*>()) {
        collect(widget);
    }
    window_.setAccessibleDescription(texts.join(QLatin1Char('\n')));
}

void QtWindow::applyBackground(std::optional<platform::RgbColor> background) {
    if (!background) {
        background = description_.backgroundColor;
    }
    window_.setPalette(background ? paletteOn(qtColor(*background), QGuiApplication::palette())
                                  : QPalette());
}

void QtWindow::fit() {
    QSize size = window_.neededSize(pixelSize(description_.contentSize));
    QSize minimum = pixelSize(description_.minimumSize.value_or(platform::Size{}))
                        .expandedTo(QSize(window_.neededWidth(), 0));
    if (const std::optional<QRect> area = mainScreenArea()) {
        const QSize room = area->size() - margins();
        size = size.boundedTo(room);
        minimum = minimum.boundedTo(room);
    }
    if ((description_.styleMask & platform::resizableWindow) == 0) {
        window_.setFixedSize(size);
    } else {
        window_.setMinimumSize(minimum);
        window_.resize(size);
    }
    fitted_ = window_.size();
}

// Keeps a size that the user has chosen.
void QtWindow::fitUnlessResized() {
    if (window_.size() == fitted_) {
        fit();
    }
}

platform::Rect QtWindow::frame() const {
    return toPoints(window_.frame());
}

void QtWindow::setFrameOrigin(platform::Point origin) {
    const QSize size = window_.frame().size();
    place({topLeftOf(origin, size), size});
}

void QtWindow::center() {
    if (const std::optional<QRect> area = mainScreenArea()) {
        QRect frame = window_.frame();
        frame.moveTopLeft(area->topLeft() + QPoint((area->width() - frame.width()) / 2,
                                                   (area->height() - frame.height()) / 2));
        place(frame);
    }
}

QSize QtWindow::margins() const {
    return window_.frame().size() - window_.geometry().size();
}

void QtWindow::place(const QRect& frame) {
    const std::optional<QRect> area = mainScreenArea();
    window_.moveFrame(area ? movedInto(*area, frame).topLeft() : frame.topLeft());
    placement_ = Placement{frame, margins()};
}

// The window manager tells the size of the frame only once the window is shown.
void QtWindow::correctPosition() {
    const std::optional<QRect> area = mainScreenArea();
    if (!placement_ || !area || !window_.isVisible()) {
        return;
    }
    if (margins() != placement_->margins) {
        const QRect intended = std::exchange(placement_, std::nullopt)->frame;
        // The frame leaves less room for the window than was assumed.
        fitUnlessResized();
        window_.moveFrame(
            movedInto(*area, resized(intended, window_.frame().size(), *area)).topLeft());
    } else if (window_.isActiveWindow()) {
        // From now on only the user moves the window.
        placement_.reset();
    }
}

void QtWindow::show() {
    isOpen_ = true;
    if (window_.isMinimized()) {
        // A window manager gives the keyboard to a window that it restores, but not to a new one.
        window_.hide();
        // Qt shows the window inside the next call, and sets the user time only in show().
        clearUserTime(window_);
        window_.setWindowState(window_.windowState() & ~Qt::WindowMinimized);
    }
    if ((description_.collectionBehavior & platform::canJoinAllSpaces) != 0) {
        showOnAllDesktops(window_);
    }
    window_.show();
    if (description_.level == platform::WindowLevel::floating) {
        layer_.enter();
    }
}

void QtWindow::orderFrontRegardless() {
    show();
    bringToFront(window_);
}

bool QtWindow::isVisible() const {
    return window_.isVisible();
}

void QtWindow::close() {
    window_.close();
}

void QtWindow::onClose() {
    if (std::exchange(isOpen_, false) && description_.willClose) {
        description_.willClose();
    }
}

}  // namespace tarvik::linuxdesktop
