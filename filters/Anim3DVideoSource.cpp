#include "filters/Anim3DVideoSource.h"

#include "filters/PictureFile.h"
#include "platform/os/FilePath.h"
#include "wrap3d/4DAnim.h"
#include "wrap3d/DataPath.h"
#include "wrap3d/SceneBridge.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

namespace qx {
namespace {

constexpr LONG kCompositionEffect = 30000;

const media::AMOVIESETUP_MEDIATYPE kOutputTypes[] = {{&media::MEDIATYPE_Video, &media::GUID_NULL}};
const media::AMOVIESETUP_PIN kPins[] = {
    {u"Output", false, true, false, false, nullptr, nullptr, 1, kOutputTypes},
};

bool IsComposition3D(std::u16string_view path) { return os::asciiLower(os::extensionOf(path)) == u".cpo3d"; }

/// A ".cpo3d" path stays as given, since the scene bridge reads it under its scenes alias;
/// any other lies under the data path's "\Scenes\".
std::u16string ResolvePath(std::u16string_view path)
{
    if (IsComposition3D(path)) return std::u16string(path);
    return DataPath() + u"\\Scenes\\" + std::u16string(path);
}

HRESULT CopyOut(const std::u16string& text, BSTR* out)
{
    if (!out) return E_POINTER;
    *out = SysAllocStringLen(text.data(), UINT(text.size()));
    return *out || text.empty() ? S_OK : E_OUTOFMEMORY;
}

std::u16string_view View(BSTR text) { return text ? std::u16string_view(text, SysStringLen(text)) : u""; }

/// Turns the frame upside down in place: the scene bridge draws top-down, the stream is
/// bottom-up. With an odd height the middle row stays.
void FlipRows(uint8_t* buffer, LONG width, LONG height)
{
    const size_t rowBytes = size_t(width) * 4;
    std::vector<uint8_t> row(rowBytes);
    for (LONG i = 0; i < height / 2; ++i) {
        uint8_t* top = buffer + size_t(i) * rowBytes;
        uint8_t* bottom = buffer + size_t(height - i - 1) * rowBytes;
        std::memcpy(row.data(), top, rowBytes);
        std::memcpy(top, bottom, rowBytes);
        std::memcpy(bottom, row.data(), rowBytes);
    }
}

}  // namespace

const media::AMOVIESETUP_FILTER CAnim3DVideoSource::kSetup = {&CAnim3DVideoSource::clsid,
                                                              u"Quorvel 3D Anim Video Source", 0x200000, 1, kPins};

com::ComPtr<CAnim3DVideoSource> CAnim3DVideoSource::Create()
{
    return com::ComPtr<CAnim3DVideoSource>(new (std::nothrow) CAnim3DVideoSource());
}

CAnim3DVideoSource::CAnim3DVideoSource()
    : CSource(u"Quorvel 3D Anim Video Source", clsid), stream(std::make_unique<CCustomSourceStream>(*this))
{
    stream->SetFramePeriod(int32_t(1e7 / fps));
}

// The stream's thread goes first (it may be drawing); then the 2D player, then the 3D one.
CAnim3DVideoSource::~CAnim3DVideoSource()
{
    stream.reset();
    player2D.reset();
    player3D.reset();
}

HRESULT CAnim3DVideoSource::queryExtraInterface(const IID& riid, void** ppv)
{
    if (riid == IAnim3DVideoSource::iid) {
        *ppv = static_cast<IAnim3DVideoSource*>(this);
        AddRef();
        return S_OK;
    }
    return E_NOINTERFACE;
}

HRESULT CAnim3DVideoSource::get_Source(BSTR* pVal) { return CopyOut(source, pVal); }

HRESULT CAnim3DVideoSource::put_Source(BSTR newVal)
{
    source = ResolvePath(View(newVal));
    is3D = IsComposition3D(source);
    return S_OK;
}

HRESULT CAnim3DVideoSource::get_Width(LONG* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = width;
    return S_OK;
}

HRESULT CAnim3DVideoSource::put_Width(LONG newVal)
{
    width = newVal;
    return S_OK;
}

HRESULT CAnim3DVideoSource::get_Height(LONG* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = height;
    return S_OK;
}

HRESULT CAnim3DVideoSource::put_Height(LONG newVal)
{
    height = newVal;
    return S_OK;
}

HRESULT CAnim3DVideoSource::get_Fps(float* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = fps;
    return S_OK;
}

HRESULT CAnim3DVideoSource::put_Fps(float newVal)
{
    fps = newVal;
    // Rates so low that a frame would outlast the 32-bit period keep the last period.
    if (newVal > 0.0f && 1e7 / newVal <= double(INT32_MAX)) stream->SetFramePeriod(int32_t(1e7 / newVal));
    return S_OK;
}

HRESULT CAnim3DVideoSource::get_Start(double* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = start;
    return S_OK;
}

HRESULT CAnim3DVideoSource::put_Start(double newVal)
{
    start = newVal;
    startTime = std::isfinite(newVal) ? media::REFERENCE_TIME(std::clamp(newVal * 1e7, -9e18, 9e18)) : 0;
    return S_OK;
}

HRESULT CAnim3DVideoSource::getImage(size_t index, BSTR* pVal) { return CopyOut(images[index], pVal); }

HRESULT CAnim3DVideoSource::putImage(size_t index, BSTR newVal)
{
    images[index] = View(newVal);
    imageCount = std::max(imageCount, LONG(index + 1));
    return S_OK;
}

HRESULT CAnim3DVideoSource::get_AspectRatio(double* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = aspectRatio;
    return S_OK;
}

HRESULT CAnim3DVideoSource::put_AspectRatio(double newVal)
{
    aspectRatio = newVal;
    return S_OK;
}

HRESULT CAnim3DVideoSource::get_StretchMode(BYTE* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = stretchMode;
    return S_OK;
}

HRESULT CAnim3DVideoSource::put_StretchMode(BYTE newVal)
{
    stretchMode = newVal;
    return S_OK;
}

HRESULT CAnim3DVideoSource::get_Duration(double* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = double(duration) / 1e7;
    return S_OK;
}

HRESULT CAnim3DVideoSource::put_Duration(double newVal)
{
    duration = std::isfinite(newVal) ? media::REFERENCE_TIME(std::clamp(newVal * 1e7, -9e18, 9e18)) : 0;
    return S_OK;
}

HRESULT CAnim3DVideoSource::GetSceneDuration(BSTR ScenePath, float* Duration)
{
    if (!Duration) return E_POINTER;
    const std::u16string path = ResolvePath(View(ScenePath));
    *Duration = IsComposition3D(path) ? qx::GetSceneDuration(path) : qx3d::CompoPlayer::GetDuration(path);
    return S_OK;
}

HRESULT CAnim3DVideoSource::GetSceneImagesCount(BSTR ScenePath, BYTE* Count)
{
    if (!Count) return E_POINTER;
    const std::u16string path = ResolvePath(View(ScenePath));
    if (!IsComposition3D(path)) {
        *Count = BYTE(qx3d::CompoPlayer::GetImagesCount(path));
        return S_OK;
    }
    if (!IsContextReady()) {
        *Count = 0;
        return S_FALSE;
    }
    *Count = BYTE(qx::GetSceneImagesCount(path));
    return S_OK;
}

LONG CAnim3DVideoSource::FrameBytes() const
{
    const int64_t bytes = int64_t(width) * int64_t(height) * 4;
    return width > 0 && height > 0 && bytes <= INT32_MAX ? LONG(bytes) : 0;
}

// The position over the composition's duration. With no duration set the position is
// taken as 0: the frame at the start, rather than one at an undefined time.
float CAnim3DVideoSource::Progress(media::REFERENCE_TIME mediaTime) const
{
    if (duration == 0) return 0.0f;
    return float(double(mediaTime) / double(duration));
}

void CAnim3DVideoSource::RenderFrame(uint8_t* buffer, media::REFERENCE_TIME mediaTime)
{
    if (FrameBytes() == 0) return;
    if (is3D) {
        Render3D(buffer, Progress(mediaTime));
    } else {
        Render2D(buffer, Progress(mediaTime));
    }
}

void CAnim3DVideoSource::Render3D(uint8_t* buffer, float progress)
{
    bool uploadImages = false;
    if (!player3D && imageCount >= 1) {
        std::unique_ptr<C4DTransform> client = CreateClient(kCompositionEffect, width, height);
        if (!client) return;
        client->SetPath(source);
        if (client->Init() == 0) return;
        player3D.reset(static_cast<C4DAnim*>(client.release()));
        uploadImages = true;
    }
    if (!player3D) return;  // no pictures: the frames stay black
    if (player3D->NeedsReset()) {
        player3D->ClearReset();
        uploadImages = true;
    }
    if (uploadImages) UploadImages();
    player3D->ProcessFrame(reinterpret_cast<uint32_t*>(buffer), progress);
    FlipRows(buffer, width, height);
}

// Each place takes a picture in turn, stretched to the frame; a file that gives no
// picture leaves the composition's own there.
void CAnim3DVideoSource::UploadImages()
{
    const LONG places = player3D->GetImageCount();
    for (LONG i = 0; i < places; ++i) {
        const std::u16string& path = images[size_t(i % imageCount)];
        if (path.empty()) continue;
        const std::unique_ptr<draw2d::Bitmap> picture = LoadPictureStretched(os::findPath(path), width, height);
        if (!picture) continue;
        UnderBridgeLock([&] { player3D->SetImage(i, picture->data()); });
    }
}

void CAnim3DVideoSource::Render2D(uint8_t* buffer, float progress)
{
    if (!player2D && imageCount >= 1) {
        player2D = std::make_unique<qx3d::CompoPlayer>();
        const int32_t mode = stretchMode == 0 ? 0 : stretchMode == 2 ? 1 : 2;
        const double aspect = aspectRatio > 0.0 ? aspectRatio : double(width) / double(height);
        player2D->Init(imageCount, images.data(), width, height, float(aspect), mode);
        player2D->Load(source);  // a file that can't be read leaves a player with nothing
    }
    draw2d::Bitmap frame(width, height, width * 4, reinterpret_cast<uint32_t*>(buffer));
    {
        // The stream's samples are RGB without alpha: the zeroed frame is black, and
        // translucent pictures blend over it rather than leaving see-through samples.
        draw2d::Graphics graphics(frame);
        graphics.clear(draw2d::Color{0xFF000000u});
        if (player2D) player2D->Render(progress, graphics);
    }
    FlipRows(buffer, width, height);
}

}  // namespace qx
