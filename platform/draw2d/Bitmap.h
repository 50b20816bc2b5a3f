#pragma once
// A 32-bit ARGB bitmap (straight alpha, B, G, R, A bytes, top-down) either over caller
// memory, as the frame routines draw on the frame buffer in place, or owning its pixels.
#include "platform/draw2d/Pyramid.h"
#include "platform/draw2d/Types.h"
#include "platform/pixel/FrameMemory.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace qx::draw2d {

/// What a read lock of the bits gives: the first row and the distance between rows.
struct BitmapData {
    int width = 0;
    int height = 0;
    int stride = 0;  // bytes
    const uint32_t* scan0 = nullptr;
};

class Bitmap {
public:
    /// A bitmap over `scan0` with rows `stride` bytes apart. The construction status says
    /// whether the arguments made a usable bitmap (positive sizes, a stride of at least a
    /// row, whole 32-bit samples, a pointer).
    Bitmap(int width, int height, int stride, uint32_t* scan0);
    /// A bitmap that owns zeroed (transparent black) pixels.
    Bitmap(int width, int height);
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;

    Status status() const { return status_; }
    int width() const { return width_; }
    int height() const { return height_; }
    /// Samples between the starts of two rows.
    int pitch() const { return pitch_; }
    uint32_t* data()
    {
        changed();
        return scan0_;
    }
    const uint32_t* data() const { return scan0_; }
    std::span<uint32_t> row(int y)
    {
        changed();
        return {scan0_ + size_t(y) * size_t(pitch_), size_t(width_)};
    }
    std::span<const uint32_t> row(int y) const { return {scan0_ + size_t(y) * size_t(pitch_), size_t(width_)}; }

    /// A copy of the whole bitmap that owns its pixels; null when this bitmap is unusable
    /// or memory runs out.
    std::unique_ptr<Bitmap> clone() const;

    /// Read lock of the whole bitmap. A bitmap has at most one lock at a time.
    Status lockBits(BitmapData& data);
    Status unlockBits();

    /// True when every sample has alpha 255; the drawing code uses it to skip alpha
    /// conversions. The answer is kept until the pixels are next reached for writing.
    bool opaque() const;
    /// Smaller copies of the bitmap for draws that shrink it, kept until the pixels are
    /// next reached for writing.
    Pyramid& reduced() const;

private:
    struct Uninitialised {};
    Bitmap(int width, int height, Uninitialised);

    pixel::FrameMemory storage_;
    uint32_t* scan0_ = nullptr;
    int width_ = 0;
    int height_ = 0;
    int pitch_ = 0;
    bool locked_ = false;
    void changed()
    {
        opaque_.reset();
        reduced_.reset();
    }

    mutable std::optional<bool> opaque_;
    mutable std::unique_ptr<Pyramid> reduced_;
    Status status_ = Status::InvalidParameter;
};

}  // namespace qx::draw2d
