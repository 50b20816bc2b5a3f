#pragma once
// The compositor's dual interface. It extends IDXEffect, whose members come first; then
// the compositor's properties in the order of their dispatch ids, 1 to 16.
#include "platform/com/Bstr.h"
#include "platform/transform/Transform.h"

namespace qx {

struct IQXCompositor : transform::IDXEffect {
    static constexpr IID iid = guid("{9ECFD2E3-4849-4E79-8636-A997F249303F}");

    using IDXEffect::get_Duration;
    using IDXEffect::put_Duration;

    virtual HRESULT get_Opacity(float* pVal) = 0;
    virtual HRESULT put_Opacity(float newVal) = 0;
    virtual HRESULT get_OffsetX(float* pVal) = 0;
    virtual HRESULT put_OffsetX(float newVal) = 0;
    virtual HRESULT get_OffsetY(float* pVal) = 0;
    virtual HRESULT put_OffsetY(float newVal) = 0;
    virtual HRESULT get_Width(float* pVal) = 0;
    virtual HRESULT put_Width(float newVal) = 0;
    virtual HRESULT get_Height(float* pVal) = 0;
    virtual HRESULT put_Height(float newVal) = 0;
    virtual HRESULT get_SrcOffsetX(float* pVal) = 0;
    virtual HRESULT put_SrcOffsetX(float newVal) = 0;
    virtual HRESULT get_SrcOffsetY(float* pVal) = 0;
    virtual HRESULT put_SrcOffsetY(float newVal) = 0;
    virtual HRESULT get_SrcWidth(float* pVal) = 0;
    virtual HRESULT put_SrcWidth(float newVal) = 0;
    virtual HRESULT get_SrcHeight(float* pVal) = 0;
    virtual HRESULT put_SrcHeight(float newVal) = 0;
    virtual HRESULT get_OverlayPath(BSTR* pVal) = 0;
    virtual HRESULT put_OverlayPath(BSTR newVal) = 0;
    virtual HRESULT get_Angle(float* pVal) = 0;
    virtual HRESULT put_Angle(float newVal) = 0;
    virtual HRESULT get_AspectRatio(float* pVal) = 0;
    virtual HRESULT put_AspectRatio(float newVal) = 0;
    virtual HRESULT get_KeyColor(ULONG* pVal) = 0;
    virtual HRESULT put_KeyColor(ULONG newVal) = 0;
    virtual HRESULT get_Similarity(ULONG* pVal) = 0;
    virtual HRESULT put_Similarity(ULONG newVal) = 0;
    /// Seconds of the clip; not the IDXEffect duration above.
    virtual HRESULT get_Duration(double* pVal) = 0;
    virtual HRESULT put_Duration(double newVal) = 0;
    virtual HRESULT get_MediaStart(double* pVal) = 0;
    virtual HRESULT put_MediaStart(double newVal) = 0;
};

}  // namespace qx
