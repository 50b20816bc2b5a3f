#pragma once
// An owner-drawn preview: a rendered frame fitted to the control with the shape of the
// picture, width first.
#include <QImage>
#include <QWidget>

namespace qx::dialogs {

class PreviewArea : public QWidget {
public:
    PreviewArea(int control, QSize size);

    void setImage(QImage image);
    const QImage& image() const { return image_; }

    /// Where a picture of `picture` size goes in `area`: the full width and the height it
    /// gives (truncated), or, when that is too high, the full height and the width it gives.
    static QRect fit(QRect area, QSize picture);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage image_;
};

}  // namespace qx::dialogs
