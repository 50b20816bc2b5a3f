#pragma once
// The 3D transition's dual interface. It extends IDXEffect, whose members come first
// (Progress drives the transition); then its properties in the order of their dispatch
// ids, 1 to 3.
#include "platform/com/Bstr.h"
#include "platform/transform/Transform.h"

namespace qx {

struct IQX3DTransform : transform::IDXEffect {
    static constexpr IID iid = guid("{65202EE6-D8BE-4664-8440-C66EF498FDBD}");

    /// Stored and returned; nothing else reads it.
    virtual HRESULT get_Quality(LONG* pVal) = 0;
    virtual HRESULT put_Quality(LONG newVal) = 0;
    /// The scene file, relative to the alias SCENES:; read at set-up.
    virtual HRESULT get_Source(BSTR* pVal) = 0;
    virtual HRESULT put_Source(BSTR newVal) = 0;
    /// The frame's shape handed to the scene; 0.0 means width over height.
    virtual HRESULT get_AspectRatio(float* pVal) = 0;
    virtual HRESULT put_AspectRatio(float newVal) = 0;
};

}  // namespace qx
