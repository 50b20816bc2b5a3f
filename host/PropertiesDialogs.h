#pragma once
// ShowPropertiesDialog of the effect host: the checks that need no dialog, then the
// effect's dialog from the dialogs' library, over the caller's picture.
#include "effects/EffectDescriptor.h"

namespace qx {

namespace imaging {
class BitmapHandle;
}

/// Shows the dialog of `effect` for the caller's list; S_OK on OK or for an effect
/// without a dialog, S_FALSE when cancelled, E_POINTER without a list or count, E_FAIL
/// when the dialogs can't be shown here (no library, no display).
HRESULT ShowEffectDialog(const EffectDescriptor& effect, LONG* Params, LONG* nParams,
                         const imaging::BitmapHandle& picture, float aspectRatio);

}  // namespace qx
