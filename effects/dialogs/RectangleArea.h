#pragma once
// The picture of a pan dialog with the rectangle the user drags over it: the picture
// fills the control, whose height follows the frame's shape, and the rectangle is drawn
// with a dotted line that inverts what lies under it.
#include "effects/dialogs/DialogRequest.h"
#include "effects/dialogs/RectanglePicker.h"

#include <QImage>
#include <QWidget>

#include <functional>

namespace qx::dialogs {

class RectangleArea : public QWidget {
public:
    /// The width of the picture controls, in pixels; their height follows the aspect.
    static constexpr int kWidth = 320;

    RectangleArea(const Picture& picture, float aspect, int control);

    RectanglePicker& picker() { return picker_; }
    const RectanglePicker& picker() const { return picker_; }

    /// Called after each change that the user makes by dragging.
    void onDragged(std::function<void()> callback) { dragged_ = std::move(callback); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    QImage picture_;
    RectanglePicker picker_;
    std::function<void()> dragged_;
};

/// The picture as an image of its own (opaque), or a null image for an empty picture.
QImage toImage(const Picture& picture);

}  // namespace qx::dialogs
