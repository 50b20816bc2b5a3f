#include "host/DynamicEffect.h"

#include "host/FramePaths.h"
#include "host/PropertiesDialogs.h"
#include "platform/imaging/BitmapHandle.h"
#include "resources/StringTable.h"
#include "wrap3d/4DTransform.h"
#include "wrap3d/DataPath.h"
#include "wrap3d/SceneBridge.h"
#include "wrap3d/SceneEffects.h"

#include <algorithm>
#include <cmath>

namespace qx {

namespace {

// A new BSTR holding `text`; E_OUTOFMEMORY when none can be made.
HRESULT newBstr(std::u16string_view text, BSTR* out)
{
    if (!out) return E_POINTER;
    *out = SysAllocStringLen(text.data(), UINT(text.size()));
    return *out ? S_OK : E_OUTOFMEMORY;
}

std::u16string_view bstrView(BSTR text) { return text ? std::u16string_view(text, SysStringLen(text)) : u""; }

HRESULT loadStringBstr(LONG stringId, BSTR* out)
{
    if (stringId < 0) return E_FAIL;
    if (stringId == 0) return newBstr(u"", out);
    const auto text = resources::LoadString(stringId);
    if (!text) return E_FAIL;
    return newBstr(*text, out);
}

template <typename T>
HRESULT getField(const T& field, T* out)
{
    if (!out) return E_POINTER;
    *out = field;
    return S_OK;
}

}  // namespace

com::ComPtr<CQXDynamicEffect> CQXDynamicEffect::Create()
{
    return com::ComPtr<CQXDynamicEffect>(new CQXDynamicEffect());
}

// One input required and at most one; a morphing effect.
CQXDynamicEffect::CQXDynamicEffect() : CDXBaseNTo1(1, 1, transform::DXTET_MORPH) {}

CQXDynamicEffect::~CQXDynamicEffect() = default;

HRESULT CQXDynamicEffect::queryExtraInterface(const IID& riid, void** ppv)
{
    if (riid != transform::IDXEffect::iid) return E_NOINTERFACE;
    *ppv = static_cast<transform::IDXEffect*>(static_cast<IQXDynamicEffect*>(this));
    AddRef();
    return S_OK;
}

const EffectDescriptor* CQXDynamicEffect::currentEffect() const
{
    return isValidIndex(effectIndex, kEffectTableSize) ? &EffectTable[size_t(effectIndex)] : nullptr;
}

HRESULT CQXDynamicEffect::get_Index(LONG* pVal) { return getField(effectIndex, pVal); }

// The put takes an effect id while the get gives the table index: hosts store ids.
HRESULT CQXDynamicEffect::put_Index(LONG newVal)
{
    requestedEffectId = newVal;
    const HRESULT hr = GetIndexFromID(newVal, &effectIndex);
    followSelection();
    return hr;
}

HRESULT CQXDynamicEffect::GetEffectDefaults(LONG nIndex, LONG* Params, LONG* nParams)
{
    if (!isValidIndex(nIndex, kEffectTableSize)) return E_INVALIDARG;
    if (!Params || !nParams) return E_POINTER;
    *nParams = 0;
    const EffectDescriptor& effect = EffectTable[size_t(nIndex)];
    if (effect.id < effect_id::kSceneFirst) {
        const ParamList defaults = defaultParams(effect);
        std::copy_n(defaults.values.begin(), defaults.count, Params);
        *nParams = defaults.count;
    } else if (auto client = CreateClient(effect.id, 0, 0)) {
        // Scene effects report what their client says, which is nothing while the scene
        // context does not start.
        client->GetDefaults(Params, nParams);
    }
    return S_OK;
}

HRESULT CQXDynamicEffect::get_Params(BSTR* pVal)
{
    return newBstr(formatParams(std::span(params).first(size_t(paramCount))), pVal);
}

HRESULT CQXDynamicEffect::put_Params(BSTR newVal)
{
    const auto list = parseParams(bstrView(newVal));
    if (!list) return E_INVALIDARG;
    params = list->values;
    paramCount = list->count;
    return S_OK;
}

// `ltBmp` is the caller's imaging::BitmapHandle, the picture the dialogs show. Its test
// comes first, for every effect, also for those that show no picture.
HRESULT CQXDynamicEffect::ShowPropertiesDialog(LONG nIndex, LONG* Params, LONG* nParams, void* ltBmp)
{
    if (!isValidIndex(nIndex, kEffectTableSize) || !ltBmp) return E_INVALIDARG;
    return ShowEffectDialog(EffectTable[size_t(nIndex)], Params, nParams,
                            *static_cast<const imaging::BitmapHandle*>(ltBmp), aspectRatio);
}

HRESULT CQXDynamicEffect::GetIDFromIdx(LONG nIndex, LONG* nID)
{
    if (!isValidIndex(nIndex, kEffectTableSize)) return E_INVALIDARG;
    return getField(EffectTable[size_t(nIndex)].id, nID);
}

HRESULT CQXDynamicEffect::GetIndexFromID(LONG nID, LONG* nIndex)
{
    if (!nIndex) return E_POINTER;
    *nIndex = -1;
    for (LONG i = 0; i < kEffectTableSize; ++i) {
        if (EffectTable[size_t(i)].id == nID) {
            *nIndex = i;
            return S_OK;
        }
    }
    return E_FAIL;
}

HRESULT CQXDynamicEffect::GetEffectsCount(LONG* nCount) { return getField(kEnumeratedEffects, nCount); }

HRESULT CQXDynamicEffect::GetEffectString(LONG nIndex, BSTR* bString)
{
    if (!isValidIndex(nIndex, kEffectTableSize)) return E_INVALIDARG;
    return loadStringBstr(EffectTable[size_t(nIndex)].nameStringId, bString);
}

HRESULT CQXDynamicEffect::HasPropertiesDialog(LONG nIndex, BYTE* bHasDialog)
{
    if (!isValidIndex(nIndex, kEffectTableSize)) return E_INVALIDARG;
    return getField(BYTE(EffectTable[size_t(nIndex)].hasDialog & 0xFF), bHasDialog);
}

HRESULT CQXDynamicEffect::get_Source(BSTR* pVal) { return newBstr(source, pVal); }

HRESULT CQXDynamicEffect::put_Source(BSTR newVal)
{
    // The field holds 259 characters; a longer text is cut rather than written past it.
    source = bstrView(newVal).substr(0, kMaxSource - 1);
    return S_OK;
}

HRESULT CQXDynamicEffect::SetGlobalDataPath(BSTR szPath)
{
    // The buffer must be filled before the throw-away client boots the scene context,
    // which reads it as it starts.
    SetDataPathBuffer(bstrView(szPath));
    CreateClient(effect_id::kScene3D, 320, 240);
    SetDataPath(bstrView(szPath));
    return S_OK;
}

HRESULT CQXDynamicEffect::get_AspectRatio(float* pVal) { return getField(aspectRatio, pVal); }

HRESULT CQXDynamicEffect::put_AspectRatio(float newVal)
{
    aspectRatio = newVal;
    return S_OK;
}

HRESULT CQXDynamicEffect::GetEffectCategoryFromIndex(LONG nIndex, LONG* Category)
{
    if (!isValidIndex(nIndex, kEffectTableSize)) return E_FAIL;
    return getField(EffectTable[size_t(nIndex)].category, Category);
}

HRESULT CQXDynamicEffect::GetCategoriesCount(LONG* nCount) { return getField(kCategoryTableSize, nCount); }

HRESULT CQXDynamicEffect::GetCategoryString(LONG nIndex, BSTR* bString)
{
    if (!isValidIndex(nIndex, kCategoryTableSize)) return E_FAIL;
    return loadStringBstr(CategoryTable[size_t(nIndex)].nameStringId, bString);
}

HRESULT CQXDynamicEffect::GetCategoryImageFromID(LONG nCat, BYTE** pImageBits, LONG* nWidth, LONG* nHeight)
{
    for (LONG i = 0; i < kCategoryTableSize; ++i) {
        if (CategoryTable[size_t(i)].id == nCat) {
            return static_cast<IQXDynamicEffect*>(this)->GetCategoryImageFromIndex(i, pImageBits, nWidth, nHeight);
        }
    }
    return E_FAIL;
}

HRESULT CQXDynamicEffect::GetCategoryImageFromIndex(LONG, BYTE**, LONG*, LONG*)
{
    return E_FAIL;  // no category has an image
}

HRESULT CQXDynamicEffect::GetCategoryIDFromIndex(LONG nIndex, LONG* nID)
{
    if (!isValidIndex(nIndex, kCategoryTableSize)) return E_FAIL;
    return getField(CategoryTable[size_t(nIndex)].id, nID);
}

HRESULT CQXDynamicEffect::get_Quality(LONG* pVal) { return getField(quality, pVal); }

HRESULT CQXDynamicEffect::put_Quality(LONG newVal)
{
    quality = newVal;
    return S_OK;
}

HRESULT CQXDynamicEffect::get_Fps(float* pVal) { return getField(fps, pVal); }

HRESULT CQXDynamicEffect::put_Fps(float newVal)
{
    fps = newVal;
    return S_OK;
}

HRESULT CQXDynamicEffect::get_Duration(double* pVal) { return getField(double(duration) / 1e7, pVal); }

HRESULT CQXDynamicEffect::put_Duration(double newVal)
{
    // Truncated toward zero to units of 100 ns; values beyond the 64-bit range saturate
    // rather than overflow the conversion.
    const double units = std::trunc(newVal * 1e7);
    if (std::isnan(units)) return E_INVALIDARG;
    duration = units >= 9.2e18 ? INT64_MAX : units <= -9.2e18 ? INT64_MIN : int64_t(units);
    return S_OK;
}

HRESULT CQXDynamicEffect::get_FilterID(LONG* pVal) { return getField(filterId, pVal); }

HRESULT CQXDynamicEffect::put_FilterID(LONG newVal)
{
    filterId = newVal;
    return S_OK;
}

HRESULT CQXDynamicEffect::GetSceneDuration(BSTR szScenePath, float* fDuration)
{
    if (!fDuration) return E_POINTER;
    *fDuration = qx::GetSceneDuration(bstrView(szScenePath));
    return S_OK;
}

}  // namespace qx
