#pragma once
// CQX3DTransform (coclass QX3DTransform): a transform with two inputs that plays a scene
// of the data path as a transition between them, input 0 the clip that leaves and input 1
// the clip that enters. A C4DTransition client does all the rendering; this object moves
// pixels between the surfaces and the client. Without a client (no scene context, a scene
// that does not load) the transition is a hard cut at the middle, so that the editor's
// timeline goes on working.
//
// Drive it as an editor does: put Source (and AspectRatio), Setup with two inputs of the
// same size and an output, then put Progress from 0 to 1 and Execute once per frame.
#include "filters/IQX3DTransform.h"
#include "platform/transform/DXBaseNTo1.h"

#include <array>
#include <memory>

namespace qx {

class C4DTransform;

class CQX3DTransform final : public transform::CDXBaseNTo1<IQX3DTransform> {
public:
    static constexpr CLSID clsid = guid("{ECE4507C-C47F-456B-8D60-848140F0B930}");
    /// The effect id of the client it makes.
    static constexpr LONG kClientId = 20000;

    /// A new transform with one reference, which the caller owns.
    static com::ComPtr<CQX3DTransform> Create();

    HRESULT get_Quality(LONG* pVal) override;
    HRESULT put_Quality(LONG newVal) override;
    HRESULT get_Source(BSTR* pVal) override;
    /// Keeps at most 259 characters, as the field holds 260 with its terminator.
    HRESULT put_Source(BSTR newVal) override;
    HRESULT get_AspectRatio(float* pVal) override;
    HRESULT put_AspectRatio(float newVal) override;

    /// The client the last set-up made; null means frames cut hard at the middle.
    const C4DTransform* Client() const { return client.get(); }

private:
    CQX3DTransform();
    ~CQX3DTransform() override;

    HRESULT OnSetup(DWORD flags) override;
    HRESULT WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool* continueProcessing) override;

    std::unique_ptr<C4DTransform> client;
    std::array<char16_t, 260> source{};
    LONG quality = 0;
    float aspectRatio = 0.0f;
};

}  // namespace qx
