#pragma once
// CQXOverlay (coclass QXOverlay): a transform with one input whose frame path has the
// steps of an overlay and draws nothing in them, so it passes its input through. It is
// there so that an editor's graph can create and hold it; the overlay work proper is
// CQXCompositor's.
#include "filters/IQXOverlay.h"
#include "platform/transform/DXBaseNTo1.h"

namespace qx {

class CQXOverlay final : public transform::CDXBaseNTo1<IQXOverlay> {
public:
    static constexpr CLSID clsid = guid("{451898E5-51BC-4D99-B019-065889299EB4}");

    /// A new overlay with one reference, which the caller owns.
    static com::ComPtr<CQXOverlay> Create();

    /// The size of input 0 at the last set-up.
    LONG Width() const { return width; }
    LONG Height() const { return height; }

private:
    CQXOverlay();
    ~CQXOverlay() override = default;

    HRESULT OnSetup(DWORD flags) override;
    HRESULT WorkProc(const transform::CDXTWorkInfoNTo1& workInfo, bool* continueProcessing) override;

    LONG width = 0;
    LONG height = 0;
};

}  // namespace qx
