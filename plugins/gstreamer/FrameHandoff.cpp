#include "plugins/gstreamer/FrameHandoff.h"

#include <new>

namespace qx::gst {

class FrameHandoff::Pin final : public media::CBaseInputPin {
public:
    Pin(FrameHandoff& owner, const GUID& subtype, LONG sampleBytes)
        : CBaseInputPin(owner, u"Input"), owner_(owner), subtype_(subtype), sampleBytes_(sampleBytes)
    {}

    HRESULT CheckMediaType(const media::CMediaType* pmt) override
    {
        if (!pmt) return E_POINTER;
        const bool fits = pmt->majortype == media::MEDIATYPE_Video && pmt->subtype == subtype_ &&
                          LONG(pmt->lSampleSize) == sampleBytes_;
        return fits ? S_OK : media::VFW_E_TYPE_NOT_ACCEPTED;
    }
    HRESULT Receive(media::IMediaSample* pSample) override
    {
        if (const HRESULT hr = CBaseInputPin::Receive(pSample); hr != S_OK) return hr;
        return owner_.put(*pSample);
    }
    HRESULT BeginFlush() override
    {
        CBaseInputPin::BeginFlush();
        owner_.flush(true);
        return S_OK;
    }
    HRESULT EndFlush() override
    {
        owner_.flush(false);
        return CBaseInputPin::EndFlush();
    }

private:
    FrameHandoff& owner_;
    GUID subtype_;
    LONG sampleBytes_;
};

com::ComPtr<FrameHandoff> FrameHandoff::Create(const GUID& subtype, LONG sampleBytes)
{
    return com::ComPtr<FrameHandoff>(new (std::nothrow) FrameHandoff(subtype, sampleBytes));
}

FrameHandoff::FrameHandoff(const GUID& subtype, LONG sampleBytes)
    : CBaseFilter(u"Frame hand-off", media::GUID_NULL), pin_(std::make_unique<Pin>(*this, subtype, sampleBytes))
{}

FrameHandoff::~FrameHandoff() = default;

media::CBasePin* FrameHandoff::GetPin(int n) { return n == 0 ? pin_.get() : nullptr; }

media::CBaseInputPin& FrameHandoff::Input() { return *pin_; }

HRESULT FrameHandoff::put(media::IMediaSample& sample)
{
    std::unique_lock lock(lock_);
    changed_.wait(lock, [this] { return !slot_ || flushing_ || shut_; });
    // S_FALSE ends the filter's loop of buffers: a seek or a stop is under way.
    if (flushing_ || shut_) return S_FALSE;
    Frame frame;
    BYTE* bytes = nullptr;
    if (FAILED(sample.GetPointer(&bytes))) return E_FAIL;
    frame.bytes.assign(bytes, bytes + sample.GetSize());
    media::REFERENCE_TIME stop = 0;
    sample.GetTime(&frame.start, &stop);
    slot_ = std::move(frame);
    changed_.notify_all();
    return S_OK;
}

void FrameHandoff::flush(bool flushing)
{
    std::lock_guard lock(lock_);
    flushing_ = flushing;
    slot_.reset();
    changed_.notify_all();
}

std::optional<FrameHandoff::Frame> FrameHandoff::take()
{
    std::unique_lock lock(lock_);
    changed_.wait(lock, [this] { return slot_ || unlocked_ || shut_; });
    if (unlocked_ || shut_) return std::nullopt;
    std::optional<Frame> frame = std::move(slot_);
    slot_.reset();
    changed_.notify_all();
    return frame;
}

void FrameHandoff::setUnlocked(bool unlocked)
{
    std::lock_guard lock(lock_);
    unlocked_ = unlocked;
    changed_.notify_all();
}

void FrameHandoff::shut()
{
    std::lock_guard lock(lock_);
    shut_ = true;
    slot_.reset();
    changed_.notify_all();
}

}  // namespace qx::gst
