#include "filters/PictureFile.h"

#include "platform/draw2d/Graphics.h"
#include "platform/video/MovieReader.h"

namespace qx {

std::unique_ptr<draw2d::Bitmap> LoadPictureFile(const std::string& path)
{
    const auto reader = video::MovieReader::open(path, 1);
    if (!reader) return nullptr;
    auto picture = std::make_unique<draw2d::Bitmap>(reader->width(), reader->height());
    if (picture->status() != draw2d::Status::Ok) return nullptr;
    const std::span<uint32_t> samples(picture->data(), size_t(picture->width()) * size_t(picture->height()));
    if (reader->readNext(samples) != video::MovieReader::Read::Frame) return nullptr;
    return picture;
}

std::unique_ptr<draw2d::Bitmap> LoadPictureStretched(const std::string& path, int width, int height)
{
    const std::unique_ptr<draw2d::Bitmap> file = LoadPictureFile(path);
    if (!file) return nullptr;
    auto frame = std::make_unique<draw2d::Bitmap>(width, height);
    if (frame->status() != draw2d::Status::Ok) return nullptr;
    draw2d::Graphics graphics(*frame);
    graphics.drawImage(*file, {0.0f, 0.0f, float(width), float(height)});
    return frame;
}

}  // namespace qx
