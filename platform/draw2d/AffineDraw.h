#pragma once
// Image draws under any affine transform (rotation, shear, scale, mirror), with a
// colour key on the source samples and a colour matrix on the drawn colours: the general
// case of drawing a picture, which axis-aligned draws without a colour matrix leave to
// the row resampler.
//
// Each target pixel is mapped back into the source and sampled bilinearly from the four
// samples around it, keyed samples counting as transparent; samples beyond the image's
// edge repeat the edge. A draw that shrinks the picture twofold or more samples one of
// its smaller copies instead (see Pyramid). Pixels that the destination's edges cut are
// blended by the part of them it covers.
#include "platform/draw2d/Bitmap.h"
#include "platform/draw2d/Resample.h"

namespace qx::draw2d {

struct TransformedDraw {
    const Bitmap* image = nullptr;  // straight alpha
    RectF sourceRect;               // in source samples
    RectF destination;              // in world units
    Matrix world;                   // world units to target pixels
    const ImageAttributes* attributes = nullptr;
    bool copy = false;            // replace the target's samples (weighted by coverage) instead of blending
    bool straightTarget = false;  // the target holds straight alpha rather than premultiplied samples
};

/// Draws into `target`.
void drawTransformed(Bitmap& target, const TransformedDraw& draw);

}  // namespace qx::draw2d
