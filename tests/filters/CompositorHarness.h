#pragma once
// Runs a CQXCompositor as a host does: two input surfaces and an output, properties,
// Setup, Progress and Execute, and the output frame read back.
#include "filters/Compositor.h"

#include <gtest/gtest.h>

#include <vector>

namespace qx::test {

class CompositorHarness {
public:
    CompositorHarness(LONG width, LONG height)
        : width_(width), height_(height), first_(transform::DXSurface::create(width, height)),
          second_(transform::DXSurface::create(width, height)), output_(transform::DXSurface::create(width, height)),
          compositor_(CQXCompositor::Create())
    {}

    CQXCompositor& compositor() { return *compositor_.get(); }
    LONG width() const { return width_; }
    LONG height() const { return height_; }

    void setFirst(const std::vector<uint32_t>& samples) { write(*first_, samples); }
    void setSecond(const std::vector<uint32_t>& samples) { write(*second_, samples); }
    void fillFirst(uint32_t sample) { setFirst(std::vector<uint32_t>(size_t(width_ * height_), sample)); }
    void fillSecond(uint32_t sample) { setSecond(std::vector<uint32_t>(size_t(width_ * height_), sample)); }

    void overlay(std::u16string_view path)
    {
        const Bstr text(path);
        ASSERT_EQ(compositor_->put_OverlayPath(text.get()), S_OK);
    }

    HRESULT setup()
    {
        const std::shared_ptr<transform::DXSurface> inputs[] = {first_, second_};
        return compositor_->Setup(inputs, output_, 0);
    }

    HRESULT execute(float progress)
    {
        if (const HRESULT hr = compositor_->put_Progress(progress); FAILED(hr)) return hr;
        return compositor_->Execute(nullptr, nullptr, nullptr);
    }

    std::vector<uint32_t> output() const { return read(*output_); }
    uint32_t at(int x, int y) const { return output()[size_t(y * width_ + x)]; }

private:
    void write(transform::DXSurface& surface, const std::vector<uint32_t>& samples) const
    {
        std::unique_ptr<transform::SurfaceLock> lock;
        ASSERT_EQ(surface.LockSurface(nullptr, 0, transform::DXLOCKF_READWRITE, lock), S_OK);
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
    std::shared_ptr<transform::DXSurface> first_;
    std::shared_ptr<transform::DXSurface> second_;
    std::shared_ptr<transform::DXSurface> output_;
    com::ComPtr<CQXCompositor> compositor_;
};

/// Channels of a BGRA sample, for comparisons with a tolerance.
inline ::testing::AssertionResult nearSample(uint32_t actual, uint32_t expected, int tolerance)
{
    for (const int shift : {0, 8, 16, 24}) {
        if (std::abs(int((actual >> shift) & 0xFF) - int((expected >> shift) & 0xFF)) > tolerance) {
            return ::testing::AssertionFailure() << std::hex << "sample 0x" << actual << " is not 0x" << expected
                                                 << std::dec << " within " << tolerance;
        }
    }
    return ::testing::AssertionSuccess();
}

}  // namespace qx::test
