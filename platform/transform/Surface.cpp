#include "platform/transform/Surface.h"

#include "platform/pixel/Alpha.h"

#include <chrono>
#include <cstring>
#include <mutex>
#include <new>

namespace qx::transform {

DXSurface::DXSurface(std::span<uint32_t> samples, std::vector<uint32_t> storage, LONG width, LONG height)
    : storage_(std::move(storage)), samples_(storage_.empty() ? samples : std::span<uint32_t>(storage_)), width_(width),
      height_(height)
{}

std::shared_ptr<DXSurface> DXSurface::create(LONG width, LONG height)
{
    if (width < 0 || height < 0) return nullptr;
    try {
        std::vector<uint32_t> storage(size_t(width) * size_t(height));
        return std::shared_ptr<DXSurface>(new DXSurface({}, std::move(storage), width, height));
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

std::shared_ptr<DXSurface> DXSurface::wrap(std::span<uint32_t> samples, LONG width, LONG height)
{
    if (width < 0 || height < 0 || samples.size() < size_t(width) * size_t(height)) return nullptr;
    return std::shared_ptr<DXSurface>(new DXSurface(samples, {}, width, height));
}

bool DXSurface::rewrap(std::span<uint32_t> samples)
{
    if (!storage_.empty() || samples.size() < size_t(width_) * size_t(height_)) return false;
    const std::lock_guard hold(access_);
    samples_ = samples;
    return true;
}

HRESULT DXSurface::LockSurface(const Bounds* bounds, ULONG timeoutMs, DWORD flags, std::unique_ptr<SurfaceLock>& lock)
{
    lock.reset();
    const Bounds wanted = bounds ? *bounds : GetBounds();
    if (!GetBounds().contains(wanted) || wanted.width() < 0 || wanted.height() < 0) return E_INVALIDARG;
    const bool writable = (flags & DXLOCKF_READWRITE) != 0;
    const auto timeout = std::chrono::milliseconds(timeoutMs);
    const bool taken = writable ? access_.try_lock_for(timeout) : access_.try_lock_shared_for(timeout);
    if (!taken) return DXT_E_LOCK_TIMEOUT;
    lock.reset(new SurfaceLock(shared_from_this(), wanted, writable));
    return S_OK;
}

SurfaceLock::SurfaceLock(std::shared_ptr<DXSurface> surface, const Bounds& bounds, bool writable)
    : surface_(std::move(surface)), bounds_(bounds), writable_(writable)
{}

SurfaceLock::~SurfaceLock()
{
    if (writable_) {
        surface_->access_.unlock();
    } else {
        surface_->access_.unlock_shared();
    }
}

bool SurfaceLock::coversRect(const Bounds& rect) const
{
    return rect.left >= 0 && rect.top >= 0 && rect.right <= bounds_.width() && rect.bottom <= bounds_.height() &&
           rect.width() >= 0 && rect.height() >= 0;
}

bool SurfaceLock::wholeRows(const DXPACKEDRECTDESC& desc) const
{
    // Rows of the rectangle that follow each other in the surface and in the caller's buffer.
    return desc.lRowPadding == 0 && desc.rect.left == 0 && bounds_.left == 0 && desc.rect.width() == surface_->width_;
}

uint32_t* SurfaceLock::row(LONG y) const
{
    return surface_->samples_.data() + size_t(bounds_.top + y) * size_t(surface_->width_) + size_t(bounds_.left);
}

SurfaceLock::NativeSamples SurfaceLock::GetNativeType() const
{
    if (!writable_) return {};
    return {row(0), surface_->width_};
}

HRESULT SurfaceLock::UnpackRect(const DXPACKEDRECTDESC& desc) const
{
    if (!desc.pSamples) return E_POINTER;
    if (!coversRect(desc.rect)) return E_INVALIDARG;
    const size_t width = size_t(desc.rect.width());
    uint32_t* target = desc.pSamples;
    if (!desc.bPremult && wholeRows(desc)) {
        // One block: the copy of a whole frame runs faster in one call than row by row.
        std::memcpy(target, row(desc.rect.top), width * size_t(desc.rect.height()) * sizeof(uint32_t));
        return S_OK;
    }
    for (LONG y = desc.rect.top; y < desc.rect.bottom; ++y, target += width + desc.lRowPadding) {
        const uint32_t* source = row(y) + desc.rect.left;
        if (desc.bPremult) {
            pixel::premultiply({source, width}, {target, width});
        } else {
            std::memcpy(target, source, width * sizeof(uint32_t));
        }
    }
    return S_OK;
}

std::span<uint32_t> SurfaceLock::wholeRowsInPlace()
{
    if (!writable_) return {};
    const auto samples = wholeRowsToRead();
    return {row(0), samples.size()};
}

std::span<const uint32_t> SurfaceLock::wholeRowsToRead() const
{
    if (bounds_.left != 0 || bounds_.width() != surface_->width_) return {};
    return {row(0), size_t(bounds_.width()) * size_t(bounds_.height())};
}

HRESULT SurfaceLock::PackRect(const DXPACKEDRECTDESC& desc)
{
    if (!writable_) return E_ACCESSDENIED;
    if (!desc.pSamples) return E_POINTER;
    if (!coversRect(desc.rect)) return E_INVALIDARG;
    const size_t width = size_t(desc.rect.width());
    const uint32_t* source = desc.pSamples;
    if (!desc.bPremult && wholeRows(desc)) {
        std::memcpy(row(desc.rect.top), source, width * size_t(desc.rect.height()) * sizeof(uint32_t));
        return S_OK;
    }
    for (LONG y = desc.rect.top; y < desc.rect.bottom; ++y, source += width + desc.lRowPadding) {
        uint32_t* target = row(y) + desc.rect.left;
        if (desc.bPremult) {
            pixel::unpremultiply({source, width}, {target, width});
        } else {
            std::memcpy(target, source, width * sizeof(uint32_t));
        }
    }
    return S_OK;
}

}  // namespace qx::transform
