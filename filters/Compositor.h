#pragma once
// CQXCompositor (coclass QXCompositor): draws one picture over a video frame, placed,
// cropped, turned, faded and colour-keyed, all in fractions of the frame. The picture
// comes from one of four places, chosen at set-up by the extension of OverlayPath:
// nothing (the second input), ".dat" (an SWF animation through CSwfRenderer, keyed on its
// magenta background), ".mov" (a movie through the movie reader component, frame by
// frame), or a still picture, resampled once to the frame's size. The first input is
// always the background.
//
// Drive it as a transform with two inputs: put the properties, Setup, then Execute once
// per frame with Progress from 0 to 1 over the clip.
#include "filters/IQXCompositor.h"
#include "filters/SwfRenderer.h"
#include "platform/draw2d/Bitmap.h"
#include "platform/pixel/FrameMemory.h"
#include "platform/transform/DXBaseNTo1.h"
#include "platform/video/MovieReaderComponent.h"

#include <memory>
#include <string>

namespace qx {

namespace draw2d {
class Graphics;
}  // namespace draw2d

class CQXCompositor final : public transform::CDXBaseNTo1<IQXCompositor> {
public:
    static constexpr CLSID clsid = guid("{318DF0E1-94A1-4DD2-8A6B-86C8317ED2B0}");
    /// KeyColor and Similarity with every bit set: no key.
    static constexpr ULONG kNoKey = 0xFFFFFFFFu;
    /// The key of animations: their magenta background, red in the low byte.
    static constexpr ULONG kMagentaKey = 0x00FF00FFu;

    /// A new compositor with one reference, which the caller owns.
    static com::ComPtr<CQXCompositor> Create();

    using CDXBaseNTo1::get_Duration;
    using CDXBaseNTo1::put_Duration;

    HRESULT get_Opacity(float* pVal) override;
    HRESULT put_Opacity(float newVal) override;
    HRESULT get_OffsetX(float* pVal) override;
    HRESULT put_OffsetX(float newVal) override;
    HRESULT get_OffsetY(float* pVal) override;
    HRESULT put_OffsetY(float newVal) override;
    HRESULT get_Width(float* pVal) override;
    HRESULT put_Width(float newVal) override;
    HRESULT get_Height(float* pVal) override;
    HRESULT put_Height(float newVal) override;
    HRESULT get_SrcOffsetX(float* pVal) override;
    HRESULT put_SrcOffsetX(float newVal) override;
    HRESULT get_SrcOffsetY(float* pVal) override;
    HRESULT put_SrcOffsetY(float newVal) override;
    HRESULT get_SrcWidth(float* pVal) override;
    HRESULT put_SrcWidth(float newVal) override;
    HRESULT get_SrcHeight(float* pVal) override;
    HRESULT put_SrcHeight(float newVal) override;
    HRESULT get_OverlayPath(BSTR* pVal) override;
    HRESULT put_OverlayPath(BSTR newVal) override;
    HRESULT get_Angle(float* pVal) override;
    HRESULT put_Angle(float newVal) override;
    HRESULT get_AspectRatio(float* pVal) override;
    HRESULT put_AspectRatio(float newVal) override;
    HRESULT get_KeyColor(ULONG* pVal) override;
    HRESULT put_KeyColor(ULONG newVal) override;
    HRESULT get_Similarity(ULONG* pVal) override;
    HRESULT put_Similarity(ULONG newVal) override;
    HRESULT get_Duration(double* pVal) override;
    HRESULT put_Duration(double newVal) override;
    HRESULT get_MediaStart(double* pVal) override;
    HRESULT put_MediaStart(double newVal) override;

private:
    CQXCompositor();
    ~CQXCompositor() override;

    HRESULT OnSetup(DWORD flags) override;
    HRESULT WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool* continueProcessing) override;

    void releaseSources();
    void setupAnimation(LONG width, LONG height);
    void setupMovie();
    void setupPicture(LONG width, LONG height);
    HRESULT passThrough(const transform::CDXTWorkInfoNTo1& workInfo);
    /// The picture of this frame: the overlay, the second input's frame, or the movie's.
    /// `movieFrame` receives the view over a movie frame; null when there is no picture.
    const draw2d::Bitmap* pictureOf(std::unique_ptr<draw2d::Bitmap>& movieFrame, LONG width, LONG height);
    uint32_t* frameToCompose(const transform::SurfaceLock& output, LONG width) const;
    void compose(const draw2d::Bitmap& picture, uint32_t* frame, LONG width, LONG height);
    void keyAndFade(draw2d::ImageAttributes& attributes) const;
    void placeAndTurn(draw2d::Graphics& graphics, LONG width, LONG height, double& frameWidth,
                      double& frameHeight) const;

    // Properties.
    float opacity = 1.0f;
    float offsetX = 0.0f;
    float offsetY = 0.0f;
    float width = 1.0f;
    float height = 1.0f;
    float srcOffsetX = 0.0f;
    float srcOffsetY = 0.0f;
    float srcWidth = 1.0f;
    float srcHeight = 1.0f;
    std::u16string overlayPath;
    float angle = 0.0f;
    float aspectRatio = 0.0f;
    ULONG keyColor = kNoKey;
    ULONG similarity = kNoKey;
    double duration = 0.0;
    double mediaStart = 0.0;

    // State made at set-up. The bitmaps over the frame buffers are views made for each
    // frame, over the do-bounds' size.
    std::unique_ptr<draw2d::Bitmap> overlayBitmap;  // the still picture, or a view over animationBits
    pixel::FrameMemory animationBits;
    pixel::FrameMemory secondBits;
    pixel::FrameMemory outputBits;  // the frame composed where the output cannot be written in place
    LONG bufferWidth = 0;
    LONG bufferHeight = 0;
    std::unique_ptr<CSwfRenderer> animation;
    com::ComPtr<IUnknown> movieFilter;  // the component as created; DirectShow's filter interface is not needed here
    com::ComPtr<video::IMovieReader> movieReader;
};

}  // namespace qx
