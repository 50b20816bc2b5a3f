#pragma once
// CAnim3DVideoSource: a source filter that plays a composition with the user's pictures
// as a 32-bit RGB video stream, one frame rendered on demand per sample. A ".cpo3d" file
// is a 3D composition, played by the scene bridge's composition client on the stream's
// thread; any other file is a 2D composition, drawn by qx3d::CompoPlayer. Players are
// built at the first frame, so every property must be set before play.
#include "filters/CompoPlayer.h"
#include "filters/CustomSourceStream.h"
#include "platform/com/Bstr.h"
#include "platform/media/FilterSetup.h"
#include "platform/media/SourceFilter.h"

#include <array>
#include <memory>
#include <string>

namespace qx {

class C4DAnim;

struct IAnim3DVideoSource : IUnknown {
    static constexpr IID iid = guid("{F96A2EFD-6FFC-4C0B-905C-0795CD3E203C}");

    virtual HRESULT get_Source(BSTR* pVal) = 0;
    virtual HRESULT put_Source(BSTR newVal) = 0;
    virtual HRESULT get_Width(LONG* pVal) = 0;
    virtual HRESULT put_Width(LONG newVal) = 0;
    virtual HRESULT get_Height(LONG* pVal) = 0;
    virtual HRESULT put_Height(LONG newVal) = 0;
    virtual HRESULT get_Fps(float* pVal) = 0;
    virtual HRESULT put_Fps(float newVal) = 0;
    virtual HRESULT get_Start(double* pVal) = 0;
    virtual HRESULT put_Start(double newVal) = 0;
    virtual HRESULT get_Image1(BSTR* pVal) = 0;
    virtual HRESULT put_Image1(BSTR newVal) = 0;
    virtual HRESULT get_Image2(BSTR* pVal) = 0;
    virtual HRESULT put_Image2(BSTR newVal) = 0;
    virtual HRESULT get_Image3(BSTR* pVal) = 0;
    virtual HRESULT put_Image3(BSTR newVal) = 0;
    virtual HRESULT get_Image4(BSTR* pVal) = 0;
    virtual HRESULT put_Image4(BSTR newVal) = 0;
    virtual HRESULT get_Image5(BSTR* pVal) = 0;
    virtual HRESULT put_Image5(BSTR newVal) = 0;
    virtual HRESULT get_AspectRatio(double* pVal) = 0;
    virtual HRESULT put_AspectRatio(double newVal) = 0;
    virtual HRESULT get_StretchMode(BYTE* pVal) = 0;
    virtual HRESULT put_StretchMode(BYTE newVal) = 0;
    virtual HRESULT get_Duration(double* pVal) = 0;
    virtual HRESULT put_Duration(double newVal) = 0;
    virtual HRESULT GetSceneDuration(BSTR ScenePath, float* Duration) = 0;
    virtual HRESULT GetSceneImagesCount(BSTR ScenePath, BYTE* Count) = 0;

protected:
    ~IAnim3DVideoSource() = default;
};

class CAnim3DVideoSource final : public media::CSource, public IAnim3DVideoSource {
public:
    static constexpr CLSID clsid = guid("{0062AFE3-170C-4BD6-8E9D-C68234E377E1}");
    static constexpr size_t kMaxImages = 5;
    /// The filter's registration: one video output.
    static const media::AMOVIESETUP_FILTER kSetup;

    /// A new filter with one reference, which the caller owns; null when out of memory.
    static com::ComPtr<CAnim3DVideoSource> Create();

    HRESULT QueryInterface(const IID& riid, void** ppv) override { return CSource::QueryInterface(riid, ppv); }
    ULONG AddRef() override { return CSource::AddRef(); }
    ULONG Release() override { return CSource::Release(); }

    HRESULT get_Source(BSTR* pVal) override;
    /// The path as given for a ".cpo3d" file (the scene bridge reads it under its scenes
    /// folder); any other gets the data path and "\Scenes\" before it.
    HRESULT put_Source(BSTR newVal) override;
    HRESULT get_Width(LONG* pVal) override;
    HRESULT put_Width(LONG newVal) override;
    HRESULT get_Height(LONG* pVal) override;
    HRESULT put_Height(LONG newVal) override;
    HRESULT get_Fps(float* pVal) override;
    /// A rate above 0 also sets the length of a frame.
    HRESULT put_Fps(float newVal) override;
    HRESULT get_Start(double* pVal) override;
    /// Kept and told back only: frames run from the seek position.
    HRESULT put_Start(double newVal) override;
    HRESULT get_Image1(BSTR* pVal) override { return getImage(0, pVal); }
    HRESULT put_Image1(BSTR newVal) override { return putImage(0, newVal); }
    HRESULT get_Image2(BSTR* pVal) override { return getImage(1, pVal); }
    HRESULT put_Image2(BSTR newVal) override { return putImage(1, newVal); }
    HRESULT get_Image3(BSTR* pVal) override { return getImage(2, pVal); }
    HRESULT put_Image3(BSTR newVal) override { return putImage(2, newVal); }
    HRESULT get_Image4(BSTR* pVal) override { return getImage(3, pVal); }
    HRESULT put_Image4(BSTR newVal) override { return putImage(3, newVal); }
    HRESULT get_Image5(BSTR* pVal) override { return getImage(4, pVal); }
    HRESULT put_Image5(BSTR newVal) override { return putImage(4, newVal); }
    HRESULT get_AspectRatio(double* pVal) override;
    HRESULT put_AspectRatio(double newVal) override;
    HRESULT get_StretchMode(BYTE* pVal) override;
    HRESULT put_StretchMode(BYTE newVal) override;
    HRESULT get_Duration(double* pVal) override;
    HRESULT put_Duration(double newVal) override;
    /// Seconds of the composition: the bridge's answer for ".cpo3d" (0 unreadable, 1 with
    /// no scene context), the file's `Duration` otherwise (-1 unreadable).
    HRESULT GetSceneDuration(BSTR ScenePath, float* Duration) override;
    /// The composition's places for pictures, as one byte (the failure -1 is 255). For a
    /// ".cpo3d" file without a ready scene context: 0 and S_FALSE.
    HRESULT GetSceneImagesCount(BSTR ScenePath, BYTE* Count) override;

    /// Image1 to Image5 by their index from 0, for hosts that hold the pictures in a list;
    /// E_INVALIDARG beyond the fifth.
    HRESULT PutImage(size_t index, BSTR newVal) { return index < kMaxImages ? putImage(index, newVal) : E_INVALIDARG; }

    CCustomSourceStream& Stream() { return *stream; }
    /// The frame size in bytes, as the media type gives it; 0 for sides the stream can't
    /// carry (not above 0, or a frame beyond 2 GiB).
    LONG FrameBytes() const;
    /// Renders the frame at `mediaTime` into `buffer` (bottom-up rows), zeroed before.
    void RenderFrame(uint8_t* buffer, media::REFERENCE_TIME mediaTime);

private:
    friend class CCustomSourceStream;
    CAnim3DVideoSource();
    ~CAnim3DVideoSource() override;

    HRESULT queryExtraInterface(const IID& riid, void** ppv) override;
    HRESULT getImage(size_t index, BSTR* pVal);
    HRESULT putImage(size_t index, BSTR newVal);
    float Progress(media::REFERENCE_TIME mediaTime) const;
    void Render3D(uint8_t* buffer, float progress);
    void Render2D(uint8_t* buffer, float progress);
    void UploadImages();

    LONG width = 320;
    LONG height = 240;
    media::REFERENCE_TIME startTime = 0;
    media::REFERENCE_TIME duration = 0;
    double start = 0.0;
    double aspectRatio = 0.0;
    float fps = 25.0f;
    std::u16string source;
    std::array<std::u16string, kMaxImages> images;
    LONG imageCount = 0;
    std::unique_ptr<C4DAnim> player3D;
    std::unique_ptr<qx3d::CompoPlayer> player2D;
    BYTE stretchMode = 0;
    bool is3D = false;
    std::unique_ptr<CCustomSourceStream> stream;
};

}  // namespace qx
