#pragma once

#include <QMainWindow>
#include <QMargins>
#include <QPoint>
#include <QScrollArea>
#include <functional>

namespace tarvik::linuxdesktop {

/// A top-level window that scrolls where its content needs more room than it has. Ctrl+W closes it.
/// Main thread only.
///
/// Only a main window is a window to a screen reader.
class ScrolledWindow final : public QMainWindow {
  public:
    ScrolledWindow();
    ~ScrolledWindow() override;

    /// Shows `content` instead of what it showed, which gets no parent and is not destroyed; null
    /// for nothing.
    void setContent(QWidget* content);
    /// The size at which the whole content is visible, at least `asked`.
    QSize neededSize(QSize asked) const;
    /// What it cannot be narrower than without cutting its content off.
    int neededWidth() const;
    /// With the window manager's frame as far as it is known.
    QRect frame() const;
    /// Moves the window so that its frame, when it has one, begins there.
    void moveFrame(QPoint place);

    /// Called before it is hidden by its close button or by close().
    std::function<void()> onClose;
    /// Called when its place or frame may have become known.
    std::function<void()> onPlaced;
    /// Called when its content may need another size.
    std::function<void()> onContentChanged;

  private:
    bool eventFilter(QObject* object, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void changeEvent(QEvent* event) override;

    QScrollArea* area_;
    mutable QMargins frameMargins_;
};

}  // namespace tarvik::linuxdesktop
