#pragma once
// ARGB32 memory surfaces with bounds and locks, the role of the transform platform's
// IDXSurface. A surface owns its samples or views caller memory (a host's frame), holds
// them as 32-bit words B, G, R, A, top-down, not premultiplied, and hands them out only
// through locks: any number of readers or one writer, each lock waiting at most the
// caller's time-out.
#include "platform/com/HResult.h"

#include <cstdint>
#include <memory>
#include <shared_mutex>
#include <span>
#include <vector>

namespace qx::transform {

/// Rectangle in samples, right and bottom exclusive.
struct Bounds {
    LONG left = 0;
    LONG top = 0;
    LONG right = 0;
    LONG bottom = 0;

    LONG width() const { return right - left; }
    LONG height() const { return bottom - top; }
    bool empty() const { return right <= left || bottom <= top; }
    bool contains(const Bounds& inner) const
    {
        return inner.left >= left && inner.top >= top && inner.right <= right && inner.bottom <= bottom;
    }
    friend bool operator==(const Bounds&, const Bounds&) = default;
};

/// The lock flags of the platform: 0 reads, 1 reads and writes.
inline constexpr DWORD DXLOCKF_READ = 0;
inline constexpr DWORD DXLOCKF_READWRITE = 1;

/// A lock that waited longer than its time-out: the Win32 wait time-out as an HRESULT.
inline constexpr HRESULT DXT_E_LOCK_TIMEOUT = HRESULT(0x80070102u);
/// A write through a lock taken for reading.
inline constexpr HRESULT E_ACCESSDENIED = HRESULT(0x80070005u);

/// Describes a caller's buffer of samples and the part of the lock it covers.
struct DXPACKEDRECTDESC {
    uint32_t* pSamples = nullptr;
    bool bPremult = false;  // the caller's samples are premultiplied by alpha
    Bounds rect;            // relative to the locked bounds
    ULONG lRowPadding = 0;  // samples between the rows of the caller's buffer
};

class SurfaceLock;

class DXSurface : public std::enable_shared_from_this<DXSurface> {
public:
    /// A surface that owns zero-filled samples; null for a negative size or no memory.
    static std::shared_ptr<DXSurface> create(LONG width, LONG height);
    /// A surface over caller memory of at least `width * height` samples, which must
    /// outlive it.
    static std::shared_ptr<DXSurface> wrap(std::span<uint32_t> samples, LONG width, LONG height);
    /// Points a surface made by wrap() at other caller memory of at least its size, as a
    /// host hands over each frame's own buffer rather than copying it in; waits for the
    /// locks held to be released. False for a surface that owns its samples, or memory too
    /// small.
    bool rewrap(std::span<uint32_t> samples);

    Bounds GetBounds() const { return {0, 0, width_, height_}; }

    /// Locks `bounds` (the whole surface when null) for reading (DXLOCKF_READ) or for
    /// reading and writing (DXLOCKF_READWRITE), waiting at most `timeoutMs`.
    HRESULT LockSurface(const Bounds* bounds, ULONG timeoutMs, DWORD flags, std::unique_ptr<SurfaceLock>& lock);

private:
    friend class SurfaceLock;
    DXSurface(std::span<uint32_t> samples, std::vector<uint32_t> storage, LONG width, LONG height);

    std::vector<uint32_t> storage_;
    std::span<uint32_t> samples_;
    LONG width_;
    LONG height_;
    std::shared_timed_mutex access_;
};

/// A held lock on part of a surface (IDXARGBReadPtr / IDXARGBReadWritePtr). Released by
/// its destructor.
class SurfaceLock {
public:
    ~SurfaceLock();
    SurfaceLock(const SurfaceLock&) = delete;
    SurfaceLock& operator=(const SurfaceLock&) = delete;

    const Bounds& bounds() const { return bounds_; }
    bool writable() const { return writable_; }

    /// Copies `desc.rect` of the locked part into the caller's samples, premultiplying
    /// when the caller asks for premultiplied samples.
    HRESULT UnpackRect(const DXPACKEDRECTDESC& desc) const;
    /// Copies the caller's samples into `desc.rect` of the locked part (write locks only),
    /// taking premultiplied samples back to straight alpha when so described.
    HRESULT PackRect(const DXPACKEDRECTDESC& desc);
    /// The locked samples themselves, rows one after the other, for a caller that writes a
    /// whole frame in place of packing it: only for a write lock on whole rows of the
    /// surface; empty otherwise.
    std::span<uint32_t> wholeRowsInPlace();
    /// The locked samples themselves for reading, rows one after the other, when the lock
    /// holds whole rows of the surface; empty otherwise.
    std::span<const uint32_t> wholeRowsToRead() const;

    /// The locked part's own samples, for work in place without a copy in and out (the
    /// platform's native access): straight B, G, R, A words, row y at `first + y * pitch`.
    /// Write locks only; a read lock gives a null `first`, so nobody writes through it.
    struct NativeSamples {
        uint32_t* first = nullptr;
        LONG pitch = 0;
    };
    NativeSamples GetNativeType() const;

private:
    friend class DXSurface;
    SurfaceLock(std::shared_ptr<DXSurface> surface, const Bounds& bounds, bool writable);
    bool coversRect(const Bounds& rect) const;
    bool wholeRows(const DXPACKEDRECTDESC& desc) const;
    uint32_t* row(LONG y) const;

    std::shared_ptr<DXSurface> surface_;
    Bounds bounds_;
    bool writable_;
};

}  // namespace qx::transform
