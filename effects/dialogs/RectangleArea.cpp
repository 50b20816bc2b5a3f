#include "effects/dialogs/RectangleArea.h"

#include <QMouseEvent>
#include <QPainter>

namespace qx::dialogs {

QImage toImage(const Picture& picture)
{
    if (picture.empty()) return {};
    // B, G, R, A bytes are a 32-bit 0xAARRGGBB word; the alpha is not shown.
    return QImage(reinterpret_cast<const uchar*>(picture.samples), picture.width, picture.height,
                  qsizetype(picture.width) * 4, QImage::Format_RGB32)
        .copy();
}

RectangleArea::RectangleArea(const Picture& picture, float aspect, int control)
    : picture_(toImage(picture)), picker_(kWidth, aspect)
{
    setObjectName(QString("picture%1").arg(control));
    setFixedSize(picker_.width(), picker_.height());
    setCursor(Qt::CrossCursor);
}

void RectangleArea::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (picture_.isNull())
        painter.fillRect(rect(), Qt::darkGray);
    else
        painter.drawImage(rect(), picture_);
    // A dotted line in exclusive-or: it shows on any picture, as the dialogs always drew it.
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.setPen(QPen(Qt::white, 1, Qt::DotLine));
    const RectanglePicker& p = picker_;
    const QPoint corners[] = {{p.x0(), p.y0()}, {p.x0(), p.y1()}, {p.x1(), p.y1()}, {p.x1(), p.y0()}, {p.x0(), p.y0()}};
    painter.drawPolyline(corners, 5);
}

void RectangleArea::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) return;
    const QPoint at = event->position().toPoint();
    picker_.press(at.x(), at.y());
    update();
    if (dragged_) dragged_();
}

void RectangleArea::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    if (!picker_.move(at.x(), at.y())) return;
    update();
    if (dragged_) dragged_();
}

void RectangleArea::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) picker_.release();
}

}  // namespace qx::dialogs
