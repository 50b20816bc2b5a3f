#include "effects/dialogs/PreviewArea.h"

#include <QPainter>

namespace qx::dialogs {

PreviewArea::PreviewArea(int control, QSize size)
{
    setObjectName(QString("preview%1").arg(control));
    setFixedSize(size);
}

void PreviewArea::setImage(QImage image)
{
    image_ = std::move(image);
    update();
}

QRect PreviewArea::fit(QRect area, QSize picture)
{
    if (picture.isEmpty()) return area;
    const double ratio = double(picture.width()) / double(picture.height());
    int width = area.width();
    int height = int(double(width) / ratio);
    if (height > area.height()) {
        height = area.height();
        width = int(double(height) * picture.width() / picture.height());
    }
    // Centred in the control; the fit decides only the size.
    return QRect(area.x() + (area.width() - width) / 2, area.y() + (area.height() - height) / 2, width, height);
}

void PreviewArea::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().window());
    if (image_.isNull()) return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(fit(rect(), image_.size()), image_);
}

}  // namespace qx::dialogs
