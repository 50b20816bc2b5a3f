#include "filters/Compositor.h"

#include "platform/com/ClassRegistry.h"
#include "platform/draw2d/Graphics.h"
#include "platform/os/FilePath.h"
#include "platform/video/MovieReader.h"

#include <algorithm>
#include <cstring>

namespace qx {

namespace {

using transform::DXPACKEDRECTDESC;
using transform::SurfaceLock;

template <typename T>
HRESULT getField(const T& field, T* out)
{
    if (!out) return E_POINTER;
    *out = field;
    return S_OK;
}

template <typename T>
HRESULT putField(T& field, T value)
{
    field = value;
    return S_OK;
}

DXPACKEDRECTDESC packedRect(const uint32_t* samples, LONG width, LONG height)
{
    // The lock only reads from the caller's samples when packing.
    return {const_cast<uint32_t*>(samples), false, {0, 0, width, height}, 0};
}

pixel::FrameMemory frameBuffer(LONG width, LONG height)
{
    if (!video::frameSizeAllowed(width, height)) return nullptr;
    return pixel::allocateFrameMemory(size_t(width) * size_t(height));
}

// One channel of the key's range: the channel of `key` plus or minus that of
// `similarity`, clamped to 0..255.
uint32_t keyChannel(ULONG key, ULONG similarity, int shift, int sign)
{
    const int value = int((key >> shift) & 0xFF) + sign * int((similarity >> shift) & 0xFF);
    return uint32_t(std::clamp(value, 0, 255));
}

}  // namespace

com::ComPtr<CQXCompositor> CQXCompositor::Create() { return com::ComPtr<CQXCompositor>(new CQXCompositor()); }

// Two inputs required, two at most.
CQXCompositor::CQXCompositor() : CDXBaseNTo1(2, 2, 0) {}

CQXCompositor::~CQXCompositor() { releaseSources(); }

HRESULT CQXCompositor::get_Opacity(float* pVal) { return getField(opacity, pVal); }
HRESULT CQXCompositor::put_Opacity(float newVal) { return putField(opacity, newVal); }
HRESULT CQXCompositor::get_OffsetX(float* pVal) { return getField(offsetX, pVal); }
HRESULT CQXCompositor::put_OffsetX(float newVal) { return putField(offsetX, newVal); }
HRESULT CQXCompositor::get_OffsetY(float* pVal) { return getField(offsetY, pVal); }
HRESULT CQXCompositor::put_OffsetY(float newVal) { return putField(offsetY, newVal); }
HRESULT CQXCompositor::get_Width(float* pVal) { return getField(width, pVal); }
HRESULT CQXCompositor::put_Width(float newVal) { return putField(width, newVal); }
HRESULT CQXCompositor::get_Height(float* pVal) { return getField(height, pVal); }
HRESULT CQXCompositor::put_Height(float newVal) { return putField(height, newVal); }
HRESULT CQXCompositor::get_SrcOffsetX(float* pVal) { return getField(srcOffsetX, pVal); }
HRESULT CQXCompositor::put_SrcOffsetX(float newVal) { return putField(srcOffsetX, newVal); }
HRESULT CQXCompositor::get_SrcOffsetY(float* pVal) { return getField(srcOffsetY, pVal); }
HRESULT CQXCompositor::put_SrcOffsetY(float newVal) { return putField(srcOffsetY, newVal); }
HRESULT CQXCompositor::get_SrcWidth(float* pVal) { return getField(srcWidth, pVal); }
HRESULT CQXCompositor::put_SrcWidth(float newVal) { return putField(srcWidth, newVal); }
HRESULT CQXCompositor::get_SrcHeight(float* pVal) { return getField(srcHeight, pVal); }
HRESULT CQXCompositor::put_SrcHeight(float newVal) { return putField(srcHeight, newVal); }
HRESULT CQXCompositor::get_Angle(float* pVal) { return getField(angle, pVal); }
HRESULT CQXCompositor::put_Angle(float newVal) { return putField(angle, newVal); }
HRESULT CQXCompositor::get_AspectRatio(float* pVal) { return getField(aspectRatio, pVal); }
HRESULT CQXCompositor::put_AspectRatio(float newVal) { return putField(aspectRatio, newVal); }
HRESULT CQXCompositor::get_KeyColor(ULONG* pVal) { return getField(keyColor, pVal); }
HRESULT CQXCompositor::put_KeyColor(ULONG newVal) { return putField(keyColor, newVal); }
HRESULT CQXCompositor::get_Similarity(ULONG* pVal) { return getField(similarity, pVal); }
HRESULT CQXCompositor::put_Similarity(ULONG newVal) { return putField(similarity, newVal); }
HRESULT CQXCompositor::get_Duration(double* pVal) { return getField(duration, pVal); }
HRESULT CQXCompositor::put_Duration(double newVal) { return putField(duration, newVal); }
HRESULT CQXCompositor::get_MediaStart(double* pVal) { return getField(mediaStart, pVal); }
HRESULT CQXCompositor::put_MediaStart(double newVal) { return putField(mediaStart, newVal); }

HRESULT CQXCompositor::get_OverlayPath(BSTR* pVal)
{
    if (!pVal) return E_POINTER;
    *pVal = SysAllocStringLen(overlayPath.data(), UINT(overlayPath.size()));
    return *pVal ? S_OK : E_OUTOFMEMORY;
}

HRESULT CQXCompositor::put_OverlayPath(BSTR newVal)
{
    overlayPath = newVal ? std::u16string(newVal, SysStringLen(newVal)) : std::u16string();
    return S_OK;
}

void CQXCompositor::releaseSources()
{
    movieReader.reset();
    movieFilter.reset();
    animation.reset();
    overlayBitmap.reset();
    animationBits.reset();
    secondBits.reset();
    outputBits.reset();
}

// Set-up makes every buffer and chooses the picture's source. It always succeeds: a
// picture that cannot be had leaves the compositor with none, and frames then pass
// through unchanged.
HRESULT CQXCompositor::OnSetup(DWORD)
{
    releaseSources();
    const transform::Bounds bounds = InputSurface(0)->GetBounds();
    bufferWidth = bounds.width();
    bufferHeight = bounds.height();
    outputBits = frameBuffer(bufferWidth, bufferHeight);
    if (!outputBits) return S_OK;
    if (overlayPath.empty()) {
        secondBits = frameBuffer(bufferWidth, bufferHeight);
        return S_OK;
    }
    const std::u16string extension = os::asciiLower(os::extensionOf(overlayPath));
    if (extension == u".dat")
        setupAnimation(bufferWidth, bufferHeight);
    else if (extension == u".mov")
        setupMovie();
    else
        setupPicture(bufferWidth, bufferHeight);
    return S_OK;
}

void CQXCompositor::setupAnimation(LONG frameWidth, LONG frameHeight)
{
    animationBits = frameBuffer(frameWidth, frameHeight);
    if (!animationBits) return;
    overlayBitmap = std::make_unique<draw2d::Bitmap>(frameWidth, frameHeight, frameWidth * 4, animationBits.get());
    animation = std::make_unique<CSwfRenderer>();
    // The movie is stretched to the frame, as the player's "transparent" hosting asked.
    if (!animation->Load(overlayPath, frameWidth, frameHeight, 1)) {
        animation.reset();
        overlayBitmap.reset();
        return;
    }
    animation->SetDuration(float(duration));
}

void CQXCompositor::setupMovie()
{
    if (FAILED(CoCreateInstance(video::CLSID_MovieReader, nullptr, CLSCTX_ALL, IUnknown::iid,
                                reinterpret_cast<void**>(movieFilter.out())))) {
        return;
    }
    com::ComPtr<video::IFileSourceFilter> file;
    if (FAILED(movieFilter->QueryInterface(video::IMovieReader::iid, reinterpret_cast<void**>(movieReader.out()))) ||
        FAILED(movieFilter->QueryInterface(video::IFileSourceFilter::iid, reinterpret_cast<void**>(file.out()))) ||
        FAILED(file->Load(overlayPath.c_str(), nullptr))) {
        movieReader.reset();
        movieFilter.reset();
    }
}

// A still picture, resampled once to the frame's size: the source fractions work on
// this copy, not on the file's own samples.
void CQXCompositor::setupPicture(LONG frameWidth, LONG frameHeight)
{
    const auto reader = video::MovieReader::open(os::findPath(overlayPath), 1);
    if (!reader) return;
    draw2d::Bitmap file(reader->width(), reader->height());
    if (file.status() != draw2d::Status::Ok ||
        reader->readNext({file.data(), size_t(file.width()) * size_t(file.height())}) !=
            video::MovieReader::Read::Frame) {
        return;
    }
    auto picture = std::make_unique<draw2d::Bitmap>(frameWidth, frameHeight);
    if (picture->status() != draw2d::Status::Ok) return;
    {
        draw2d::Graphics graphics(*picture);
        graphics.drawImage(file, {0.0f, 0.0f, float(frameWidth), float(frameHeight)});
    }
    overlayBitmap = std::move(picture);
}

// With no picture at all (a file that could not be used), the frame is the first input
// as it stands.
HRESULT CQXCompositor::passThrough(const transform::CDXTWorkInfoNTo1& workInfo)
{
    std::unique_ptr<SurfaceLock> input;
    std::unique_ptr<SurfaceLock> output;
    if (FAILED(InputSurface(0)->LockSurface(&workInfo.DoBnds, m_ulLockTimeOut, transform::DXLOCKF_READ, input)) ||
        FAILED(OutputSurface()->LockSurface(&workInfo.OutputBnds, m_ulLockTimeOut, transform::DXLOCKF_READWRITE,
                                            output)) ||
        !outputBits) {
        return S_OK;
    }
    const LONG w = workInfo.DoBnds.width();
    const LONG h = workInfo.DoBnds.height();
    uint32_t* frame = frameToCompose(*output, w);
    input->UnpackRect(packedRect(frame, w, h));
    if (frame == outputBits.get()) output->PackRect(packedRect(frame, w, h));
    return S_OK;
}

// The output's own samples when its rows follow each other as the frame's do, so that the
// frame is composed in place; else the compositor's buffer, packed into the output after.
uint32_t* CQXCompositor::frameToCompose(const SurfaceLock& output, LONG w) const
{
    const SurfaceLock::NativeSamples native = output.GetNativeType();
    return native.first && native.pitch == w ? native.first : outputBits.get();
}

HRESULT CQXCompositor::WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool*)
{
    const bool secondInput = !overlayBitmap && !movieReader;
    if (secondInput && !secondBits) return passThrough(workInfo);
    const LONG w = workInfo.DoBnds.width();
    const LONG h = workInfo.DoBnds.height();
    // The buffers hold the frame of set-up; a larger do-bounds cannot be composed.
    if (int64_t(w) * h > int64_t(bufferWidth) * bufferHeight) return S_OK;
    std::unique_ptr<SurfaceLock> input;
    std::unique_ptr<SurfaceLock> second;
    std::unique_ptr<SurfaceLock> output;
    if (FAILED(InputSurface(0)->LockSurface(&workInfo.DoBnds, m_ulLockTimeOut, transform::DXLOCKF_READ, input))) {
        return S_OK;
    }
    if (secondInput &&
        FAILED(InputSurface(1)->LockSurface(&workInfo.DoBnds, m_ulLockTimeOut, transform::DXLOCKF_READ, second))) {
        return S_OK;
    }
    if (FAILED(OutputSurface()->LockSurface(&workInfo.OutputBnds, m_ulLockTimeOut, transform::DXLOCKF_READWRITE,
                                            output))) {
        return S_OK;
    }
    if (!outputBits) return E_FAIL;
    // The first input goes straight into the frame being composed, and that frame is the
    // output's own memory where it can be: the frame then costs one copy of the input.
    uint32_t* frame = frameToCompose(*output, w);
    input->UnpackRect(packedRect(frame, w, h));
    if (secondInput) second->UnpackRect(packedRect(secondBits.get(), w, h));
    std::unique_ptr<draw2d::Bitmap> movieFrame;
    const draw2d::Bitmap* picture = pictureOf(movieFrame, w, h);
    if (picture) compose(*picture, frame, w, h);
    if (frame == outputBits.get()) output->PackRect(packedRect(frame, w, h));
    return S_OK;
}

const draw2d::Bitmap* CQXCompositor::pictureOf(std::unique_ptr<draw2d::Bitmap>& movieFrame, LONG w, LONG h)
{
    if (movieReader) {
        int movieWidth = 0;
        int movieHeight = 0;
        float movieDuration = 0.0f;
        movieReader->GetWidth(&movieWidth);
        movieReader->GetHeight(&movieHeight);
        movieReader->GetDuration(&movieDuration);
        const float time = float(double(progress()) * std::min(double(movieDuration), duration) + mediaStart);
        BYTE* pixels = nullptr;
        // A reader that gives no frame leaves the frame without a picture.
        if (FAILED(movieReader->GetFrame(time, &pixels)) || !pixels) return nullptr;
        movieFrame = std::make_unique<draw2d::Bitmap>(movieWidth, movieHeight, movieWidth * 4,
                                                      reinterpret_cast<uint32_t*>(pixels));
        return movieFrame->status() == draw2d::Status::Ok ? movieFrame.get() : nullptr;
    }
    if (animation) {
        // Through the bitmap view, so that it knows its samples changed.
        uint32_t* bits = overlayBitmap->data();
        std::memset(bits, 0, size_t(bufferWidth) * size_t(bufferHeight) * sizeof(uint32_t));
        animation->Draw(bits, progress(), 0, 0.0f, 0.0f, 1.0f, 1.0f);
        // The animation's background goes: the key is its magenta, whatever was set.
        keyColor = kMagentaKey;
        similarity = 0;
    }
    if (overlayBitmap) return overlayBitmap.get();
    movieFrame = std::make_unique<draw2d::Bitmap>(w, h, w * 4, secondBits.get());
    return movieFrame->status() == draw2d::Status::Ok ? movieFrame.get() : nullptr;
}

void CQXCompositor::keyAndFade(draw2d::ImageAttributes& attributes) const
{
    if (keyColor != kNoKey && similarity != kNoKey) {
        // The low byte is red, then green, then blue.
        const auto color = [&](int sign) {
            return draw2d::Color::fromArgb(255, keyChannel(keyColor, similarity, 0, sign),
                                           keyChannel(keyColor, similarity, 8, sign),
                                           keyChannel(keyColor, similarity, 16, sign));
        };
        attributes.SetColorKey(color(-1), color(+1));
    }
    if (opacity != 1.0f) {
        draw2d::ColorMatrix fade;
        fade.m[3][3] = opacity;
        attributes.SetColorMatrix(fade);
    }
}

// The frame's shape and the turn around the destination's centre. Geometry is then in a
// space of W by H that the scale brings to the frame, so placements stay undistorted on
// frames whose pixels are not square.
void CQXCompositor::placeAndTurn(draw2d::Graphics& graphics, LONG w, LONG h, double& frameWidth,
                                 double& frameHeight) const
{
    frameWidth = w;
    frameHeight = aspectRatio > 0.0f ? double(w) / aspectRatio : double(h);
    graphics.ScaleTransform(1.0, double(h) / frameHeight);
    if (angle == 0.0f) return;
    const double cx = (width / 2.0 + offsetX) * frameWidth;
    const double cy = (height / 2.0 + offsetY) * frameHeight;
    graphics.TranslateTransform(cx, cy);
    graphics.RotateTransform(angle);
    graphics.TranslateTransform(-cx, -cy);
}

void CQXCompositor::compose(const draw2d::Bitmap& picture, uint32_t* frame, LONG w, LONG h)
{
    draw2d::Bitmap output(w, h, w * 4, frame);
    draw2d::Graphics graphics(output);
    draw2d::ImageAttributes attributes;
    keyAndFade(attributes);
    double frameWidth = 0.0;
    double frameHeight = 0.0;
    placeAndTurn(graphics, w, h, frameWidth, frameHeight);
    const double pw = picture.width();
    const double ph = picture.height();
    const draw2d::RectF destination{float(offsetX * frameWidth), float(offsetY * frameHeight),
                                    float(width * frameWidth), float(height * frameHeight)};
    const draw2d::RectF source{float(srcOffsetX * pw), float(srcOffsetY * ph), float(srcWidth * pw),
                               float(srcHeight * ph)};
    graphics.drawImage(picture, destination, source, &attributes);
}

}  // namespace qx
