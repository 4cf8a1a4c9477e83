// SPDX-License-Identifier: MIT

#include "platform/linux/windows/ScrolledWindow.h"

#include <malloc.h>
#include <xcb/xcb.h>

#include <QBackingStore>
#include <QCloseEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QStyle>
#include <QWindow>

#include "platform/linux/windows/Assets.h"
#include "platform/linux/windows/X11Server.h"

namespace tarvik::linuxdesktop {

ScrolledWindow::ScrolledWindow() : area_(new QScrollArea(this)) {
    setAttribute(Qt::WA_QuitOnClose, false);
    // Tells the window manager that the window appears without a user's action (user time 0).
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowIcon(applicationIcon());
    area_->setFrameShape(QFrame::NoFrame);
    area_->setWidgetResizable(true);
    // Tab would stop at the scroll area, where nothing can be done.
    area_->setFocusPolicy(Qt::NoFocus);
    setCentralWidget(area_);
    // The minimum size comes from the window's description.
    layout()->setSizeConstraint(QLayout::SetNoConstraint);
    if (xcb_connection_t* connection = x11Connection()) {
        frameExtents_ = x11Atom(connection, "_NET_FRAME_EXTENTS");
    }
}

ScrolledWindow::~ScrolledWindow() {
    setContent(nullptr);
}

void ScrolledWindow::setContent(QWidget* content) {
    if (QWidget* old = area_->takeWidget()) {
        old->removeEventFilter(this);
        old->setParent(nullptr);
    }
    if (content != nullptr) {
        area_->setWidget(content);
        content->installEventFilter(this);
        content->show();
    }
    focusNoControl();
}

QSize ScrolledWindow::neededSize(QSize minimum) const {
    const QWidget* content = area_->widget();
    if (content == nullptr) {
        return minimum;
    }
    const QSize natural = minimum.expandedTo(content->sizeHint());
    const int height = content->hasHeightForWidth() ? content->heightForWidth(natural.width())
                                                    : content->sizeHint().height();
    return {natural.width(), std::max(minimum.height(), height)};
}

int ScrolledWindow::neededWidth() const {
    const QWidget* content = area_->widget();
    return content == nullptr ? 0
                              : content->minimumSizeHint().width() +
                                    style()->pixelMetric(QStyle::PM_ScrollBarExtent);
}

QRect ScrolledWindow::frame() const {
    const QWindow* handle = windowHandle();
    // Qt forgets the frame of a hidden window. The frame is the same again when the window is
    // shown.
    if (handle != nullptr && !handle->frameMargins().isNull()) {
        frameMargins_ = handle->frameMargins();
    }
    return geometry().marginsAdded(frameMargins_);
}

void ScrolledWindow::moveFrame(QPoint position) {
    if (frameMargins_.isNull()) {
        move(position);
    } else {
        setGeometry({position + QPoint(frameMargins_.left(), frameMargins_.top()), size()});
    }
}

bool ScrolledWindow::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::LayoutRequest && onContentChanged) {
        onContentChanged();
    }
    return false;
}

// Qt sends no event of its own when the size of the frame becomes known.
bool ScrolledWindow::nativeEvent(const QByteArray& eventType, void* message, qintptr*) {
    if (frameExtents_ == 0 || eventType != "xcb_generic_event_t") {
        return false;
    }
    const auto* event = static_cast<const xcb_property_notify_event_t*>(message);
    if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY && event->atom == frameExtents_) {
        // Qt itself takes note of the property only after this call.
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (onFrameChanged) {
                    onFrameChanged();
                }
            },
            Qt::QueuedConnection);
    }
    return false;
}

void ScrolledWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    // A spontaneous event tells of a window that the user has restored.
    if (!event->spontaneous()) {
        focusNoControl();
    }
}

// The pixels of a hidden window, and the heap that the window has used, are megabytes. Qt makes the
// pixels anew when the window is shown again.
void ScrolledWindow::hideEvent(QHideEvent* event) {
    QMainWindow::hideEvent(event);
    // A spontaneous event tells of a window that the user has minimised.
    if (event->spontaneous()) {
        return;
    }
    if (QBackingStore* pixels = backingStore()) {
        pixels->resize(QSize(1, 1));
    }
    malloc_trim(0);
}

// Keys that the focused control has no use for arrive here.
void ScrolledWindow::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) || event->keyCombination() == (Qt::CTRL | Qt::Key_W)) {
        close();
    } else {
        QMainWindow::keyPressEvent(event);
    }
}

void ScrolledWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    if (onClose) {
        onClose();
    }
}

void ScrolledWindow::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    if (onFrameChanged) {
        onFrameChanged();
    }
}

void ScrolledWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && onFrameChanged) {
        onFrameChanged();
    }
}

// Without a focus elsewhere the window would give the focus to its first control. What the user
// types on would then change the key or press a button. In the scroll area keys only scroll.
void ScrolledWindow::focusNoControl() {
    area_->setFocus();
}

}  // namespace tarvik::linuxdesktop
