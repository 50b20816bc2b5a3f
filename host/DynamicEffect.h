#pragma once
// CQXDynamicEffect, the effect host: the catalogue of effects, the parameter list of the
// selected effect, and the path of one frame from the input surface through the effect's
// routine or object to the output surface. Hosts drive it as a transform with one input
// and one output: put Index (an effect id), Params and the other properties, Setup, then
// Execute once per frame with Progress from 0 at the first frame to 1 at the last.
#include "host/EffectCatalog.h"
#include "host/EffectParams.h"
#include "host/IQXDynamicEffect.h"
#include "platform/transform/DXBaseNTo1.h"

#include <array>
#include <memory>
#include <string>

namespace qx {

class EffectRunner;

class CQXDynamicEffect final : public transform::CDXBaseNTo1<IQXDynamicEffect> {
public:
    static constexpr CLSID clsid = guid("{0E09660B-CA83-487F-A9DC-024B3BB6B271}");
    static constexpr size_t kMaxSource = 260;  // characters, the terminator included

    /// A new host with one reference, which the caller owns.
    static com::ComPtr<CQXDynamicEffect> Create();

    using CDXBaseNTo1::get_Duration;
    using CDXBaseNTo1::put_Duration;

    HRESULT get_Index(LONG* pVal) override;
    HRESULT put_Index(LONG newVal) override;
    HRESULT GetEffectDefaults(LONG nIndex, LONG* Params, LONG* nParams) override;
    HRESULT get_Params(BSTR* pVal) override;
    HRESULT put_Params(BSTR newVal) override;
    HRESULT ShowPropertiesDialog(LONG nIndex, LONG* Params, LONG* nParams, void* ltBmp) override;
    HRESULT GetIDFromIdx(LONG nIndex, LONG* nID) override;
    HRESULT GetIndexFromID(LONG nID, LONG* nIndex) override;
    HRESULT GetEffectsCount(LONG* nCount) override;
    HRESULT GetEffectString(LONG nIndex, BSTR* bString) override;
    HRESULT HasPropertiesDialog(LONG nIndex, BYTE* bHasDialog) override;
    HRESULT get_Source(BSTR* pVal) override;
    HRESULT put_Source(BSTR newVal) override;
    HRESULT SetGlobalDataPath(BSTR szPath) override;
    HRESULT get_AspectRatio(float* pVal) override;
    HRESULT put_AspectRatio(float newVal) override;
    HRESULT GetEffectCategoryFromIndex(LONG nIndex, LONG* Category) override;
    HRESULT GetCategoriesCount(LONG* nCount) override;
    HRESULT GetCategoryString(LONG nIndex, BSTR* bString) override;
    HRESULT GetCategoryImageFromID(LONG nCat, BYTE** pImageBits, LONG* nWidth, LONG* nHeight) override;
    HRESULT GetCategoryImageFromIndex(LONG nIndex, BYTE** pImageBits, LONG* nWidth, LONG* nHeight) override;
    HRESULT GetCategoryIDFromIndex(LONG nIndex, LONG* nID) override;
    HRESULT get_Quality(LONG* pVal) override;
    HRESULT put_Quality(LONG newVal) override;
    HRESULT get_Fps(float* pVal) override;
    HRESULT put_Fps(float newVal) override;
    HRESULT get_Duration(double* pVal) override;
    HRESULT put_Duration(double newVal) override;
    HRESULT get_FilterID(LONG* pVal) override;
    HRESULT put_FilterID(LONG newVal) override;
    HRESULT GetSceneDuration(BSTR szScenePath, float* fDuration) override;

private:
    CQXDynamicEffect();
    ~CQXDynamicEffect() override;

    HRESULT queryExtraInterface(const IID& riid, void** ppv) override;
    HRESULT OnSetup(DWORD flags) override;
    HRESULT WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool* continueProcessing) override;

    const EffectDescriptor* currentEffect() const;
    /// After an Index put: the path of the selected row, if Setup prepared another.
    void followSelection();
    HRESULT setupRunner(const EffectDescriptor& effect, LONG width, LONG height);
    HRESULT setupExternalFilter();
    HRESULT setupVideoEffect(LONG id, LONG width, LONG height);
    void setupSceneClient(LONG id, LONG width, LONG height);
    HRESULT setupRoutine(const EffectDescriptor& effect);
    HRESULT setupFlashAnimation(LONG width, LONG height);
    ParamValues paramValues() const { return {params, paramCount}; }

    /// The path of the effect that the last Setup prepared, for the row `runnerIndex`.
    std::unique_ptr<EffectRunner> runner;
    LONG runnerIndex = -1;
    /// The path of the selected row while it is not the one Setup prepared: an Index put
    /// after Setup selects an effect as it runs before its own Setup.
    std::unique_ptr<EffectRunner> standIn;
    LONG effectIndex = 0;
    LONG requestedEffectId = 0;
    LONG filterId = 0;
    std::array<LONG, kMaxParams> params{};
    LONG paramCount = 0;
    std::u16string source;
    float aspectRatio = 0.0f;
    float fps = 25.0f;
    LONG quality = 0;
    int64_t duration = 0;  // units of 100 ns
};

}  // namespace qx
