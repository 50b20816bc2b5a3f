#pragma once
// Samples and allocators. A sample is one buffer of media with its properties: start and
// stop time, media times, sync point, preroll and discontinuity flags, and a media type
// when the format changes with it. An allocator owns a pool of samples; a sample handed
// out returns to its pool on its last Release.
#include "platform/com/Unknown.h"
#include "platform/media/MediaType.h"

#include <atomic>
#include <memory>
#include <optional>
#include <span>
#include <utility>

namespace qx::media {

inline constexpr HRESULT VFW_E_BUFFER_OVERFLOW = HRESULT(0x8004020Du);

struct IMediaSample : IUnknown {
    static constexpr IID iid = guid("{56A8689A-0AD4-11CE-B03A-0020AF0BA770}");

    virtual HRESULT GetPointer(BYTE** ppBuffer) = 0;
    virtual LONG GetSize() = 0;
    /// S_OK with both times, VFW_S_NO_STOP_TIME with a start only (the stop written is
    /// start + 1), VFW_E_SAMPLE_TIME_NOT_SET without.
    virtual HRESULT GetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) = 0;
    /// A null start clears the times; a null stop sets the start alone.
    virtual HRESULT SetTime(const REFERENCE_TIME* pTimeStart, const REFERENCE_TIME* pTimeEnd) = 0;
    /// S_OK when set, S_FALSE when not; the same for the two flags below.
    virtual HRESULT IsSyncPoint() = 0;
    virtual HRESULT SetSyncPoint(bool bIsSyncPoint) = 0;
    virtual HRESULT IsPreroll() = 0;
    virtual HRESULT SetPreroll(bool bIsPreroll) = 0;
    virtual HRESULT IsDiscontinuity() = 0;
    virtual HRESULT SetDiscontinuity(bool bDiscontinuity) = 0;
    virtual LONG GetActualDataLength() = 0;
    virtual HRESULT SetActualDataLength(LONG length) = 0;
    /// S_OK and a copy when the sample carries a media type, S_FALSE when it does not.
    virtual HRESULT GetMediaType(CMediaType* pMediaType) = 0;
    /// Attaches a copy of the type; null removes it.
    virtual HRESULT SetMediaType(const CMediaType* pMediaType) = 0;
    /// S_OK with both media times, VFW_E_MEDIA_TIME_NOT_SET without.
    virtual HRESULT GetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) = 0;
    /// Both null clears them.
    virtual HRESULT SetMediaTime(const LONGLONG* pTimeStart, const LONGLONG* pTimeEnd) = 0;

protected:
    ~IMediaSample() = default;
};

/// What is asked of an allocator: buffer count and size, alignment, prefix bytes.
struct ALLOCATOR_PROPERTIES {
    LONG cBuffers = 0;
    LONG cbBuffer = 0;
    LONG cbAlign = 0;
    LONG cbPrefix = 0;
};

/// GetBuffer flags.
inline constexpr DWORD AM_GBF_PREVFRAMESKIPPED = 1;
inline constexpr DWORD AM_GBF_NOTASYNCPOINT = 2;
inline constexpr DWORD AM_GBF_NOWAIT = 4;

struct IMemAllocator : IUnknown {
    static constexpr IID iid = guid("{56A8689C-0AD4-11CE-B03A-0020AF0BA770}");

    /// Asks for buffers; `pActual` tells what the allocator will give, which may differ.
    virtual HRESULT SetProperties(const ALLOCATOR_PROPERTIES* pRequest, ALLOCATOR_PROPERTIES* pActual) = 0;
    virtual HRESULT GetProperties(ALLOCATOR_PROPERTIES* pProps) = 0;
    virtual HRESULT Commit() = 0;
    virtual HRESULT Decommit() = 0;
    /// A free sample with one reference for the caller. Waits for one to come back when
    /// all are out, unless `dwFlags` has AM_GBF_NOWAIT; VFW_E_NOT_COMMITTED when the
    /// allocator is not committed or is decommitted while waiting.
    virtual HRESULT GetBuffer(IMediaSample** ppBuffer, const REFERENCE_TIME* pStartTime, const REFERENCE_TIME* pEndTime,
                              DWORD dwFlags) = 0;
    /// Takes back a sample of this allocator whose last reference went.
    virtual HRESULT ReleaseBuffer(IMediaSample* pBuffer) = 0;

protected:
    ~IMemAllocator() = default;
};

class CMediaSample final : public IMediaSample {
public:
    /// A sample over memory the caller keeps alive, owned by its references: the last
    /// Release deletes it. Hosts wrap buffers of their own this way.
    static com::ComPtr<IMediaSample> Wrap(std::span<uint8_t> buffer);

    /// A sample of `allocator`'s pool: the last Release hands it back.
    CMediaSample(std::span<uint8_t> buffer, IMemAllocator* allocator);
    CMediaSample(const CMediaSample&) = delete;
    CMediaSample& operator=(const CMediaSample&) = delete;
    ~CMediaSample() = default;

    HRESULT QueryInterface(const IID& riid, void** ppv) override;
    ULONG AddRef() override;
    ULONG Release() override;

    HRESULT GetPointer(BYTE** ppBuffer) override;
    LONG GetSize() override { return LONG(buffer_.size()); }
    HRESULT GetTime(REFERENCE_TIME* pTimeStart, REFERENCE_TIME* pTimeEnd) override;
    HRESULT SetTime(const REFERENCE_TIME* pTimeStart, const REFERENCE_TIME* pTimeEnd) override;
    HRESULT IsSyncPoint() override { return syncPoint_ ? S_OK : S_FALSE; }
    HRESULT SetSyncPoint(bool bIsSyncPoint) override;
    HRESULT IsPreroll() override { return preroll_ ? S_OK : S_FALSE; }
    HRESULT SetPreroll(bool bIsPreroll) override;
    HRESULT IsDiscontinuity() override { return discontinuity_ ? S_OK : S_FALSE; }
    HRESULT SetDiscontinuity(bool bDiscontinuity) override;
    LONG GetActualDataLength() override { return actualLength_; }
    HRESULT SetActualDataLength(LONG length) override;
    HRESULT GetMediaType(CMediaType* pMediaType) override;
    HRESULT SetMediaType(const CMediaType* pMediaType) override;
    HRESULT GetMediaTime(LONGLONG* pTimeStart, LONGLONG* pTimeEnd) override;
    HRESULT SetMediaTime(const LONGLONG* pTimeStart, const LONGLONG* pTimeEnd) override;

    /// Clears every property, as a sample is when its allocator hands it out again.
    void ResetProperties();

private:
    std::span<uint8_t> buffer_;
    IMemAllocator* allocator_;
    std::atomic<ULONG> references_{0};
    std::optional<REFERENCE_TIME> start_;
    std::optional<REFERENCE_TIME> stop_;
    std::optional<std::pair<LONGLONG, LONGLONG>> mediaTime_;
    bool syncPoint_ = false;
    bool preroll_ = false;
    bool discontinuity_ = false;
    LONG actualLength_;
    std::unique_ptr<CMediaType> mediaType_;
};

}  // namespace qx::media
