#include "filters/CropTransform.h"

#include "platform/imaging/BitmapHandle.h"
#include "platform/imaging/Filters.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

namespace qx {

using namespace media;

namespace {

const AMOVIESETUP_MEDIATYPE kPinTypes[] = {
    {&MEDIATYPE_Video, &MEDIASUBTYPE_RGB32},
    {&MEDIATYPE_Video, &MEDIASUBTYPE_ARGB32},
};

const AMOVIESETUP_PIN kPins[] = {
    {u"Input", false, false, false, false, &GUID_NULL, nullptr, 2, kPinTypes},
    {u"Output", false, true, false, false, &GUID_NULL, nullptr, 2, kPinTypes},
};

/// The angle of the anti-flicker blur, in hundredths of a degree: 90 degrees, so that
/// the run goes along the column, from each sample towards the top of the picture.
constexpr int32_t kColumnAngle = 9000;

/// The length of the anti-flicker blur on a frame of `rows` rows: the height over 100,
/// times the level over 10, as a float, rounded up. Level 10 on 480 rows gives 5 and
/// level 1 gives 1 (0.48 rounded up). Lengths of 48 and 5 for those two levels would
/// take the height over 10; the length here is a hundredth of the height per ten
/// levels, which is the formula the filter computes.
int32_t blurLength(int32_t rows, int16_t level)
{
    const float dim = float((double(rows) / 100.0) * (double(level) / 10.0));
    return int32_t(std::min(double(std::ceil(dim)), double(std::numeric_limits<int32_t>::max())));
}

/// A whole-frame byte count, as a DWORD holds it (wrapping, as the stored field does).
DWORD imageBytes(LONG width, LONG height, uint16_t bitCount)
{
    return DWORD(uint64_t(int64_t(width) * int64_t(height) * int64_t(bitCount) / 8));
}

imaging::DibHeader dibHeaderOf(const BITMAPINFOHEADER& header)
{
    imaging::DibHeader dib;
    dib.size = header.biSize;
    dib.width = header.biWidth;
    dib.height = header.biHeight;
    dib.planes = header.biPlanes;
    dib.bitCount = header.biBitCount;
    dib.compression = header.biCompression;
    dib.sizeImage = header.biSizeImage;
    return dib;
}

/// Copies the sample's properties from input to output in their order. Each flag is
/// copied only from a clear answer (S_OK or S_FALSE); any other answer ends the copying
/// there, and the frame goes on all the same.
void copySampleProperties(IMediaSample* in, IMediaSample* out, const CMediaType& outputType)
{
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    if (in->GetTime(&start, &stop) == S_OK) out->SetTime(&start, &stop);
    LONGLONG mediaStart = 0;
    LONGLONG mediaStop = 0;
    if (in->GetMediaTime(&mediaStart, &mediaStop) == S_OK) out->SetMediaTime(&mediaStart, &mediaStop);
    const auto clear = [](HRESULT hr) { return hr == S_OK || hr == S_FALSE; };
    HRESULT hr = in->IsSyncPoint();
    if (!clear(hr)) return;
    out->SetSyncPoint(hr == S_OK);
    out->SetMediaType(&outputType);
    hr = in->IsPreroll();
    if (!clear(hr)) return;
    out->SetPreroll(hr == S_OK);
    hr = in->IsDiscontinuity();
    if (!clear(hr)) return;
    out->SetDiscontinuity(hr == S_OK);
}

/// Where the rows of a picture land in an output frame of `width` x `height` samples:
/// centred, with the halves of the size differences truncated towards zero, so that an
/// odd difference leaves its extra column on the right and its extra row at the end of
/// the buffer. Rows and columns that fall outside the output are left out.
struct Placement {
    int64_t rowBytes = 0;     ///< bytes of an output row
    int64_t firstRow = 0;     ///< the picture's first row that lands, in storage order
    int64_t endRow = 0;       ///< one past its last
    int64_t outputRow = 0;    ///< the output row where the first row lands
    int64_t firstColumn = 0;  ///< the picture's first column that lands
    int64_t byteOffset = 0;   ///< where that column lands in an output row
    size_t copiedBytes = 0;   ///< bytes of each landing row

    Placement(int32_t pictureWidth, int32_t pictureHeight, LONG width, LONG height, int64_t bytesPerSample)
    {
        if (width <= 0 || height <= 0) return;
        const int64_t x = (int64_t(width) - pictureWidth) / 2;
        const int64_t y = (int64_t(height) - pictureHeight) / 2;
        firstColumn = std::max<int64_t>(0, -x);
        const int64_t endColumn = std::min<int64_t>(pictureWidth, width - x);
        firstRow = std::max<int64_t>(0, -y);
        endRow = std::clamp<int64_t>(height - y, firstRow, pictureHeight);
        if (endColumn <= firstColumn) endRow = firstRow;
        rowBytes = int64_t(width) * bytesPerSample;
        outputRow = firstRow + y;
        byteOffset = (x + firstColumn) * bytesPerSample;
        copiedBytes = size_t(std::max<int64_t>(0, endColumn - firstColumn)) * 4;
    }
};

/// Zeroes what the picture's rows do not cover, so that the whole output is black and,
/// in the alpha channel, fully transparent: the output is written once.
void zeroAroundPicture(std::span<uint8_t> target, const Placement& at)
{
    size_t cleared = 0;  // bytes from the start that are known to be zero or picture
    for (int64_t i = at.firstRow; i < at.endRow; ++i) {
        const size_t start = size_t((at.outputRow + i - at.firstRow) * at.rowBytes + at.byteOffset);
        if (start + at.copiedBytes > target.size()) break;
        std::memset(target.data() + cleared, 0, start - cleared);
        cleared = start + at.copiedBytes;
    }
    std::memset(target.data() + cleared, 0, target.size() - cleared);
}

/// Copies the rows of `bitmap` in their storage order to where they land.
void copyRows(const imaging::BitmapHandle& bitmap, std::span<uint8_t> target, const Placement& at)
{
    for (int64_t i = at.firstRow; i < at.endRow; ++i) {
        const size_t start = size_t((at.outputRow + i - at.firstRow) * at.rowBytes + at.byteOffset);
        if (start + at.copiedBytes > target.size()) break;
        std::memcpy(target.data() + start, bitmap.dibRow(int32_t(i)).data() + at.firstColumn, at.copiedBytes);
    }
}

}  // namespace

const AMOVIESETUP_FILTER CQXCropTransform::kSetup = {&CQXCropTransform::clsid, u"QXCropTransform", 0x200000, 2, kPins};

com::ComPtr<CQXCropTransform> CQXCropTransform::Create()
{
    return com::ComPtr<CQXCropTransform>(new (std::nothrow) CQXCropTransform());
}

CQXCropTransform::CQXCropTransform() : CTransformFilter(u"QXCropTransform", clsid) {}

HRESULT CQXCropTransform::queryExtraInterface(const IID& riid, void** ppv)
{
    if (riid != IQXCropTransform::iid) return E_NOINTERFACE;
    *ppv = static_cast<IQXCropTransform*>(this);
    AddRef();
    return S_OK;
}

HRESULT CQXCropTransform::PutSize(LONG nWidth, LONG nHeight)
{
    width = nWidth;
    height = nHeight;
    return S_OK;
}

HRESULT CQXCropTransform::SetAntiFlickeringLevel(int16_t Level)
{
    antiFlickeringLevel = Level;
    return S_OK;
}

HRESULT CQXCropTransform::PutAspectRatio(float fAspectRatio)
{
    aspectRatio = fAspectRatio;
    return S_OK;
}

HRESULT CQXCropTransform::PutOutputSize(LONG nOutWidth, LONG nOutHeight)
{
    outputWidth = nOutWidth;
    outputHeight = nOutHeight;
    return S_OK;
}

HRESULT CQXCropTransform::CheckInputType(const CMediaType* mtIn)
{
    if (!mtIn) return E_POINTER;
    const auto info = mtIn->VideoInfo();
    const bool rgb = mtIn->subtype == MEDIASUBTYPE_ARGB32 || mtIn->subtype == MEDIASUBTYPE_RGB32;
    if (mtIn->majortype != MEDIATYPE_Video || !rgb || !info || info->bmiHeader.biBitCount != 32) {
        return VFW_E_TYPE_NOT_ACCEPTED;
    }
    return S_OK;
}

bool CQXCropTransform::isOutputOfSetSize(const CMediaType& type)
{
    if (CheckInputType(&type) != S_OK) return false;
    const BITMAPINFOHEADER header = type.VideoInfo()->bmiHeader;
    return header.biWidth == width && header.biHeight == height;
}

HRESULT CQXCropTransform::CheckTransform(const CMediaType* mtIn, const CMediaType* mtOut)
{
    if (!mtIn || !mtOut) return E_POINTER;
    return CheckInputType(mtIn) == S_OK && isOutputOfSetSize(*mtOut) ? S_OK : E_FAIL;
}

HRESULT CQXCropTransform::DecideBufferSize(IMemAllocator* pAllocator, ALLOCATOR_PROPERTIES* pProperties)
{
    if (!m_pInput->IsConnected()) return E_UNEXPECTED;
    if (!pAllocator || !pProperties) return E_POINTER;
    const uint16_t bits = m_pInput->CurrentMediaType().VideoInfo()->bmiHeader.biBitCount;
    const int64_t bytes = int64_t(width) * int64_t(height) * bits / 8;
    // A frame whose size a 32-bit count cannot hold cannot be had.
    if (bytes > std::numeric_limits<LONG>::max()) return E_OUTOFMEMORY;
    pProperties->cBuffers = 1;
    pProperties->cbBuffer = LONG(bytes);
    ALLOCATOR_PROPERTIES actual;
    if (const HRESULT hr = pAllocator->SetProperties(pProperties, &actual); FAILED(hr)) return hr;
    if (actual.cBuffers < pProperties->cBuffers || actual.cbBuffer < pProperties->cbBuffer) return E_FAIL;
    return S_OK;
}

CMediaType CQXCropTransform::outputTypeFromInput()
{
    CMediaType type = m_pInput->CurrentMediaType();
    VIDEOINFOHEADER info = *type.VideoInfo();
    // A side left at 0 takes the input's, and keeps it from now on.
    if (width == 0) width = info.bmiHeader.biWidth;
    if (height == 0) height = info.bmiHeader.biHeight;
    info.rcSource = {0, 0, width, height};
    info.rcTarget = {0, 0, width, height};
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = height;
    info.bmiHeader.biSizeImage = imageBytes(width, height, info.bmiHeader.biBitCount);
    type.SetVideoInfo(info);
    type.lSampleSize = info.bmiHeader.biSizeImage;
    return type;
}

HRESULT CQXCropTransform::GetMediaType(int iPosition, CMediaType* pMediaType)
{
    if (!pMediaType) return E_POINTER;
    if (!m_pInput->IsConnected()) return E_UNEXPECTED;
    if (iPosition < 0) return E_INVALIDARG;
    if (iPosition > 0) return VFW_S_NO_MORE_ITEMS;
    *pMediaType = outputTypeFromInput();
    return S_OK;
}

HRESULT CQXCropTransform::SetMediaType(PIN_DIRECTION direction, const CMediaType* pmt)
{
    const HRESULT hr = CTransformFilter::SetMediaType(direction, pmt);
    if (direction == PINDIR_OUTPUT && pmt && m_pInput->IsConnected() && isOutputOfSetSize(*pmt)) {
        outputType = outputTypeFromInput();
    }
    return hr;
}

HRESULT CQXCropTransform::Transform(IMediaSample* pIn, IMediaSample* pOut)
{
    if (!pIn || !pOut) return E_POINTER;
    // 1. The sample's properties.
    copySampleProperties(pIn, pOut, outputType);
    // 2. Input and output memory.
    BYTE* source = nullptr;
    BYTE* target = nullptr;
    if (FAILED(pIn->GetPointer(&source)) || FAILED(pOut->GetPointer(&target)) || !source || !target) return E_FAIL;
    const std::span<const uint8_t> input(source, size_t(std::max<LONG>(0, pIn->GetActualDataLength())));
    const std::span<uint8_t> output(target, size_t(std::max<LONG>(0, pOut->GetSize())));
    const auto info = m_pInput->CurrentMediaType().VideoInfo();
    if (!info) return E_UNEXPECTED;  // the input is not connected
    const BITMAPINFOHEADER header = info->bmiHeader;
    const int64_t bytesPerSample = header.biBitCount >> 3;
    // 4. A bitmap of the input frame; the blur works on it.
    imaging::BitmapHandle bitmap;
    if (bitmap.loadDib(dibHeaderOf(header), input) != 1) {
        std::memset(output.data(), 0, output.size());
        return E_FAIL;
    }
    // 5. The anti-flicker blur, along the columns.
    if (antiFlickeringLevel > 0) {
        imaging::motionBlur(bitmap, blurLength(bitmap.height(), antiFlickeringLevel), kColumnAngle, true);
    }
    // 3 and 6 to 8. The rows, centred in the output, on black: the padding is zeroed
    // around them rather than before them.
    const Placement placement(bitmap.width(), bitmap.height(), width, height, bytesPerSample);
    zeroAroundPicture(output, placement);
    copyRows(bitmap, output, placement);
    return S_OK;
}

}  // namespace qx
