#include "platform/draw2d/Bitmap.h"

#include "platform/os/WorkerPool.h"
#include "platform/pixel/Alpha.h"

#include <algorithm>
#include <atomic>

namespace qx::draw2d {

Bitmap::Bitmap(int width, int height, int stride, uint32_t* scan0)
{
    if (width <= 0 || height <= 0 || !scan0 || stride % 4 != 0 || stride / 4 < width) return;
    scan0_ = scan0;
    width_ = width;
    height_ = height;
    pitch_ = stride / 4;
    status_ = Status::Ok;
}

Bitmap::Bitmap(int width, int height) : Bitmap(width, height, Uninitialised{})
{
    if (status_ == Status::Ok) std::fill_n(scan0_, size_t(width) * size_t(height), 0u);
}

Bitmap::Bitmap(int width, int height, Uninitialised)
{
    if (width <= 0 || height <= 0) return;
    storage_ = pixel::allocateFrameMemory(size_t(width) * size_t(height));
    if (!storage_) {
        status_ = Status::OutOfMemory;
        return;
    }
    scan0_ = storage_.get();
    width_ = width;
    height_ = height;
    pitch_ = width;
    status_ = Status::Ok;
}

std::unique_ptr<Bitmap> Bitmap::clone() const
{
    if (status_ != Status::Ok) return nullptr;
    std::unique_ptr<Bitmap> copy(new Bitmap(width_, height_, Uninitialised{}));
    if (copy->status() != Status::Ok) return nullptr;
    // Slices of rows on the shared workers; any slice that meets a translucent sample
    // makes the whole picture translucent.
    std::atomic<bool> opaque = true;
    os::parallelRows(height_, [&](int begin, int end) {
        bool sliceOpaque = true;
        for (int y = begin; y < end; ++y) sliceOpaque &= pixel::copyAndCheckOpaque(row(y), copy->row(y));
        if (!sliceOpaque) opaque.store(false, std::memory_order_relaxed);
    });
    copy->opaque_ = opaque.load();  // learnt from the copy, which the drawing code asks next
    return copy;
}

Pyramid& Bitmap::reduced() const
{
    if (!reduced_) reduced_ = std::make_unique<Pyramid>();
    return *reduced_;
}

Status Bitmap::lockBits(BitmapData& data)
{
    if (status_ != Status::Ok) return Status::InvalidParameter;
    if (locked_) return Status::WrongState;
    locked_ = true;
    data = {width_, height_, pitch_ * 4, scan0_};
    return Status::Ok;
}

Status Bitmap::unlockBits()
{
    if (!locked_) return Status::WrongState;
    locked_ = false;
    return Status::Ok;
}

bool Bitmap::opaque() const
{
    if (!opaque_) {
        std::atomic<bool> opaque = true;
        os::parallelRows(height_, [&](int begin, int end) {
            for (int y = begin; y < end && opaque.load(std::memory_order_relaxed); ++y) {
                if (!pixel::allOpaque(row(y))) opaque.store(false, std::memory_order_relaxed);
            }
        });
        opaque_ = opaque.load();
    }
    return *opaque_;
}

}  // namespace qx::draw2d
