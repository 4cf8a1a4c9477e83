#include "platform/linux/windows/ScrolledWindow.h"

#include <QCloseEvent>
#include <QLayout>
#include <QShortcut>
#include <QStyle>
#include <QWindow>

#include "platform/linux/windows/Assets.h"

namespace tarvik::linuxdesktop {

ScrolledWindow::ScrolledWindow() : area_(new QScrollArea(this)) {
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowIcon(applicationIcon());
    area_->setFrameShape(QFrame::NoFrame);
    area_->setWidgetResizable(true);
    // It would be a stop on the way from control to control where nothing can be done.
    area_->setFocusPolicy(Qt::NoFocus);
    setCentralWidget(area_);
    // How small it can be is for the description to say.
    layout()->setSizeConstraint(QLayout::SetNoConstraint);
    auto* shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_W), this);
    connect(shortcut, &QShortcut::activated, this, [this] { close(); });
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
}

QSize ScrolledWindow::neededSize(QSize asked) const {
    const QWidget* content = area_->widget();
    if (content == nullptr) {
        return asked;
    }
    const QSize natural = asked.expandedTo(content->sizeHint());
    const int height = content->hasHeightForWidth() ? content->heightForWidth(natural.width())
                                                    : content->sizeHint().height();
    return {natural.width(), std::max(asked.height(), height)};
}

int ScrolledWindow::neededWidth() const {
    const QWidget* content = area_->widget();
    return content == nullptr ? 0
                              : content->minimumSizeHint().width() +
                                    style()->pixelMetric(QStyle::PM_ScrollBarExtent);
}

QRect ScrolledWindow::frame() const {
    const QWindow* handle = windowHandle();
    // Qt forgets the frame of a window that is hidden, and it will be the same again.
    if (handle != nullptr && !handle->frameMargins().isNull()) {
        frameMargins_ = handle->frameMargins();
    }
    return geometry().marginsAdded(frameMargins_);
}

void ScrolledWindow::moveFrame(QPoint place) {
    if (frameMargins_.isNull()) {
        move(place);
    } else {
        setGeometry({place + QPoint(frameMargins_.left(), frameMargins_.top()), size()});
    }
}

bool ScrolledWindow::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::LayoutRequest && onContentChanged) {
        onContentChanged();
    }
    return false;
}

void ScrolledWindow::closeEvent(QCloseEvent* event) {
    event->accept();
    if (onClose) {
        onClose();
    }
}

void ScrolledWindow::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    if (onPlaced) {
        onPlaced();
    }
}

void ScrolledWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && onPlaced) {
        onPlaced();
    }
}

}  // namespace tarvik::linuxdesktop
