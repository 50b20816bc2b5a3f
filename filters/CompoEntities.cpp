// The entities of a 2D composition: their world transforms, their pictures and their
// draws.
#include "filters/CompoPlayer.h"

#include "filters/PictureFile.h"
#include "platform/os/FilePath.h"
#include "platform/os/WideText.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace qx3d {
namespace {

using qx::draw2d::Matrix;

constexpr double kDegreesPerRadian = 57.295780181884766;

/// A picture path as the composition names it: a path with a drive or from the root
/// stands as it is; any other is relative to the folder of the running program.
std::string PicturePath(std::u16string_view path)
{
    if (path.find(u':') != std::u16string_view::npos || path.starts_with(u"/")) return qx::os::findPath(path);
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::u16string folder = qx::os::fromUtf8(program.parent_path().string());
    return qx::os::findPath(folder + u"/" + std::u16string(path));
}

}  // namespace

void CompoPlayer::Entity::Draw(qx::draw2d::Graphics&) {}

// Each step comes before the ones already there: the pivot moves the entity's points
// first, then the scale, the turn (clockwise on the frame, since Y of the file is
// upwards and the frame's downwards) and the position; the parent's transform comes
// last. A parent later in the list lends its matrix of the frame before.
void CompoPlayer::Entity::UpdateMatrix()
{
    const double degrees = float(double(rotation) * kDegreesPerRadian);
    const double radians = degrees * 3.14159265358979323846 / 180.0;
    const double c = std::cos(radians), s = std::sin(radians);
    matrix = Matrix{1, 0, 0, 1, position.X, -double(position.Y)};
    matrix = Matrix::product({c, s, -s, c, 0, 0}, matrix);
    matrix = Matrix::product({scale.X, 0, 0, scale.Y, 0, 0}, matrix);
    matrix = Matrix::product({1, 0, 0, 1, pivot.X, pivot.Y}, matrix);
    if (parent) matrix = Matrix::product(matrix, parent->matrix);
}

bool CompoPlayer::Image::LoadPicture(std::u16string_view path, int32_t maxWidth, int32_t maxHeight)
{
    std::unique_ptr<qx::draw2d::Bitmap> file = qx::LoadPictureFile(PicturePath(path));
    if (!file) return false;
    const int fileWidth = file->width(), fileHeight = file->height();
    if (fileWidth <= maxWidth && fileHeight <= maxHeight) {
        bitmap = std::move(file);
        return true;
    }
    const double scaleBy = std::min(double(maxWidth) / fileWidth, double(maxHeight) / fileHeight);
    const int newWidth = std::max(1, int(fileWidth * scaleBy + 0.5));
    const int newHeight = std::max(1, int(fileHeight * scaleBy + 0.5));
    auto shrunk = std::make_unique<qx::draw2d::Bitmap>(newWidth, newHeight);
    if (shrunk->status() != qx::draw2d::Status::Ok) return false;
    {
        qx::draw2d::Graphics graphics(*shrunk);
        graphics.setCompositingMode(qx::draw2d::CompositingMode::SourceCopy);
        graphics.drawImage(*file, {0.0f, 0.0f, float(newWidth), float(newHeight)});
    }
    bitmap = std::move(shrunk);
    return true;
}

void CompoPlayer::Image::Draw(qx::draw2d::Graphics& graphics)
{
    if (!bitmap || transparency >= 0.995f) return;
    const Matrix saved = graphics.transform();
    graphics.MultiplyTransform(matrix);
    qx::draw2d::ImageAttributes attributes;
    if (transparency > 0.005f) {
        qx::draw2d::ColorMatrix fade;
        fade.m[3][3] = float(1.0 - double(transparency));
        attributes.SetColorMatrix(fade);
    }
    const double sx = size.X, sy = size.Y;
    const double pw = bitmap->width(), ph = bitmap->height();
    const double k = double(kAuthoredAspect) / aspect;
    const qx::draw2d::RectF frame{float(-sx / 2), float(-sy / 2), float(sx), float(sy)};
    qx::draw2d::RectF source{0.0f, 0.0f, float(pw), float(ph)};
    qx::draw2d::RectF destination = frame;
    if (stretch == 1) {
        // Fit inside: the whole picture, its shape kept, within the entity's size.
        const double m = std::min(sx / pw, sy / ph);
        const double w = pw * m * k, h = ph * m;
        destination = {float(-w / 2), float(-h / 2), float(w), float(h)};
    } else if (stretch == 2) {
        // Fill and crop: the entity's size covered, the picture's overflow cut evenly.
        const double m = std::max((sx / k) / pw, sy / ph);
        const double w = pw * m * k, h = ph * m;
        const double cx = pw - pw * sx / w, cy = ph - ph * sy / h;
        source = {float(cx / 2), float(cy / 2), float(pw - cx), float(ph - cy)};
    }
    graphics.drawImage(*bitmap, destination, source, &attributes);
    graphics.SetTransform(saved);
}

void CompoPlayer::Shape::Draw(qx::draw2d::Graphics& graphics)
{
    if (path.size() < 2) return;
    const qx::draw2d::Pen red{qx::draw2d::Color{0xFFFF0000u}, 0.001f};
    graphics.drawPolygon(red, path);
}

}  // namespace qx3d
