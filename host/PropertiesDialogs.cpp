#include "host/PropertiesDialogs.h"

#include "effects/dialogs/DialogRequest.h"
#include "host/DialogLibrary.h"
#include "host/ScenePreview.h"
#include "platform/imaging/BitmapHandle.h"
#include "wrap3d/SceneEffects.h"

#include <optional>

namespace qx {

namespace {

// The pickers' own shape until the host has an aspect ratio: a ratio of 0 (not set)
// would give the picture no height.
constexpr float kDialogAspect = 1.3333334f;

}  // namespace

HRESULT ShowEffectDialog(const EffectDescriptor& effect, LONG* Params, LONG* nParams,
                         const imaging::BitmapHandle& picture, float aspectRatio)
{
    if (dialogs::dialogResource(effect.id) == 0) return S_OK;
    if (!Params || !nParams) return E_POINTER;
    const dialogs::ShowPropertiesDialogFunction show = DialogEntryPoint();
    if (!show) return E_FAIL;

    // A shallow copy of the caller's handle, which outlives the dialog.
    const imaging::BitmapHandle shown = picture;
    dialogs::DialogRequest request;
    request.effectId = effect.id;
    request.table = effect.params;
    request.params = Params;
    request.paramCount = nParams;
    request.aspect = aspectRatio > 0.0f ? aspectRatio : kDialogAspect;
    if (!shown.isNull()) request.picture = {shown.pixels().data(), shown.width(), shown.height()};
    std::optional<ScenePreview> preview;
    if (effect.id == effect_id::kMove3D && !shown.isNull()) {
        preview.emplace(effect.id, shown.width(), shown.height());
        request.preview = &*preview;
    }
    return show(&request);
}

}  // namespace qx
