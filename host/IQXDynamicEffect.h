#pragma once
// The effect host's dual interface. It extends IDXEffect, whose members come first as in
// the type library; then the host's own members with the argument names of the type
// library.
#include "platform/com/Bstr.h"
#include "platform/transform/Transform.h"

namespace qx {

struct IQXDynamicEffect : transform::IDXEffect {
    static constexpr IID iid = guid("{9B7DB154-A434-461A-AD61-489D9001919B}");

    using IDXEffect::get_Duration;
    using IDXEffect::put_Duration;

    virtual HRESULT get_Index(LONG* pVal) = 0;
    virtual HRESULT put_Index(LONG newVal) = 0;
    virtual HRESULT GetEffectDefaults(LONG nIndex, LONG* Params, LONG* nParams) = 0;
    virtual HRESULT get_Params(BSTR* pVal) = 0;
    virtual HRESULT put_Params(BSTR newVal) = 0;
    virtual HRESULT ShowPropertiesDialog(LONG nIndex, LONG* Params, LONG* nParams, void* ltBmp) = 0;
    virtual HRESULT GetIDFromIdx(LONG nIndex, LONG* nID) = 0;
    virtual HRESULT GetIndexFromID(LONG nID, LONG* nIndex) = 0;
    virtual HRESULT GetEffectsCount(LONG* nCount) = 0;
    virtual HRESULT GetEffectString(LONG nIndex, BSTR* bString) = 0;
    virtual HRESULT HasPropertiesDialog(LONG nIndex, BYTE* bHasDialog) = 0;
    virtual HRESULT get_Source(BSTR* pVal) = 0;
    virtual HRESULT put_Source(BSTR newVal) = 0;
    virtual HRESULT SetGlobalDataPath(BSTR szPath) = 0;
    virtual HRESULT get_AspectRatio(float* pVal) = 0;
    virtual HRESULT put_AspectRatio(float newVal) = 0;
    virtual HRESULT GetEffectCategoryFromIndex(LONG nIndex, LONG* Category) = 0;
    virtual HRESULT GetCategoriesCount(LONG* nCount) = 0;
    virtual HRESULT GetCategoryString(LONG nIndex, BSTR* bString) = 0;
    virtual HRESULT GetCategoryImageFromID(LONG nCat, BYTE** pImageBits, LONG* nWidth, LONG* nHeight) = 0;
    virtual HRESULT GetCategoryImageFromIndex(LONG nIndex, BYTE** pImageBits, LONG* nWidth, LONG* nHeight) = 0;
    virtual HRESULT GetCategoryIDFromIndex(LONG nIndex, LONG* nID) = 0;
    virtual HRESULT get_Quality(LONG* pVal) = 0;
    virtual HRESULT put_Quality(LONG newVal) = 0;
    virtual HRESULT get_Fps(float* pVal) = 0;
    virtual HRESULT put_Fps(float newVal) = 0;
    /// The effect's span in seconds; not the IDXEffect duration above.
    virtual HRESULT get_Duration(double* pVal) = 0;
    virtual HRESULT put_Duration(double newVal) = 0;
    virtual HRESULT get_FilterID(LONG* pVal) = 0;
    virtual HRESULT put_FilterID(LONG newVal) = 0;
    virtual HRESULT GetSceneDuration(BSTR szScenePath, float* fDuration) = 0;
};

}  // namespace qx
