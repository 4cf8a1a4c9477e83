// SPDX-License-Identifier: MIT
#pragma once

#include <QMainWindow>
#include <QMargins>
#include <QPoint>
#include <QScrollArea>
#include <cstdint>
#include <functional>

namespace tarvik::linuxdesktop {

/// A top-level window that scrolls where its content needs more room. Ctrl+W and Escape close it.
/// The window appears without taking the keyboard, and without a focused control. The first Tab
/// reaches the first control. Main thread only.
///
/// It is a QMainWindow because a screen reader takes no other widget for a window.
class ScrolledWindow final : public QMainWindow {
  public:
    ScrolledWindow();
    ~ScrolledWindow() override;

    /// Shows `content` in place of the present content; null shows nothing. The old content loses
    /// its parent and is not destroyed.
    void setContent(QWidget* content);
    /// The size at which the whole content is visible; at least `minimum`.
    QSize neededSize(QSize minimum) const;
    /// The width below which content is cut off.
    int neededWidth() const;
    /// The window with the window manager's frame, as far as the frame is known.
    QRect frame() const;
    /// Moves the upper left corner of the frame to `position`.
    void moveFrame(QPoint position);

    /// Called before the close button or close() hides the window.
    std::function<void()> onClose;
    /// Called when the position or the frame may have become known.
    std::function<void()> onFrameChanged;
    /// Called when the content may need another size.
    std::function<void()> onContentChanged;

  private:
    bool eventFilter(QObject* object, QEvent* event) override;
    bool nativeEvent(const QByteArray& eventType, void* message, qintptr* result) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void changeEvent(QEvent* event) override;
    void focusNoControl();

    QScrollArea* area_;
    /// The X server's number of the property with the size of the frame; 0 without an X server.
    std::uint32_t frameExtents_ = 0;
    mutable QMargins frameMargins_;
};

}  // namespace tarvik::linuxdesktop
