#pragma once
// Runs a CQXDynamicEffect the way an editor does: surfaces, Index and Params puts, Setup,
// Progress and Execute, and reads the output frame back.
#include "host/DynamicEffect.h"

#include <algorithm>
#include <string>
#include <vector>

namespace qx::test {

class EffectHarness {
public:
    EffectHarness(LONG width, LONG height)
        : width_(width), height_(height), input_(transform::DXSurface::create(width, height)),
          output_(transform::DXSurface::create(width, height)), effect_(CQXDynamicEffect::Create())
    {}

    CQXDynamicEffect& effect() { return *effect_.get(); }
    LONG width() const { return width_; }
    LONG height() const { return height_; }

    void setInput(const std::vector<uint32_t>& samples) { write(*input_, samples); }
    /// Fills the output with a marker, so that a frame left unwritten shows.
    void markOutput(uint32_t marker) { write(*output_, std::vector<uint32_t>(size_t(width_ * height_), marker)); }

    HRESULT select(LONG id, std::u16string_view params = u"")
    {
        if (const HRESULT hr = effect_->put_Index(id); FAILED(hr)) return hr;
        Bstr text(params);
        return effect_->put_Params(text.get());
    }

    HRESULT setup()
    {
        const std::shared_ptr<transform::DXSurface> inputs[] = {input_};
        return effect_->Setup(inputs, output_, 0);
    }

    HRESULT execute(float progress)
    {
        if (const HRESULT hr = effect_->put_Progress(progress); FAILED(hr)) return hr;
        return effect_->Execute(nullptr, nullptr, nullptr);
    }

    std::vector<uint32_t> output() const { return read(*output_); }

private:
    void write(transform::DXSurface& surface, const std::vector<uint32_t>& samples) const
    {
        std::unique_ptr<transform::SurfaceLock> lock;
        surface.LockSurface(nullptr, 0, transform::DXLOCKF_READWRITE, lock);
        lock->PackRect({const_cast<uint32_t*>(samples.data()), false, {0, 0, width_, height_}, 0});
    }
    std::vector<uint32_t> read(transform::DXSurface& surface) const
    {
        std::vector<uint32_t> samples(size_t(width_ * height_));
        std::unique_ptr<transform::SurfaceLock> lock;
        surface.LockSurface(nullptr, 0, transform::DXLOCKF_READ, lock);
        lock->UnpackRect({samples.data(), false, {0, 0, width_, height_}, 0});
        return samples;
    }

    LONG width_;
    LONG height_;
    std::shared_ptr<transform::DXSurface> input_;
    std::shared_ptr<transform::DXSurface> output_;
    com::ComPtr<CQXDynamicEffect> effect_;
};

/// An opaque picture with a different colour in every sample.
inline std::vector<uint32_t> gradientFrame(LONG width, LONG height)
{
    std::vector<uint32_t> frame(size_t(width * height));
    for (LONG y = 0; y < height; ++y) {
        for (LONG x = 0; x < width; ++x) {
            frame[size_t(y * width + x)] = 0xFF000000u | uint32_t(x * 255 / std::max<LONG>(1, width - 1)) << 16 |
                                           uint32_t(y * 255 / std::max<LONG>(1, height - 1)) << 8 | 0x40u;
        }
    }
    return frame;
}

}  // namespace qx::test
