#pragma once
// Which dialog an effect has, and the call of one: the dialog opens with the request's
// values, runs modally, and on OK writes its values (and, for the rectangle dialogs,
// the count) back to the request's list.
#include "effects/dialogs/DialogRequest.h"
#include "effects/dialogs/PropertiesDialog.h"

#include <memory>

namespace qx::dialogs {

/// The dialog of the request's effect, filled with its values; null for an effect
/// without a dialog or a table too short for its dialog.
std::unique_ptr<PropertiesDialog> makeDialog(const DialogRequest& request);

/// Writes what an accepted dialog holds to the request's list and count.
void storeResult(const PropertiesDialog& dialog, const DialogRequest& request);

/// Runs the dialog of the request modally: S_OK on OK, with the values written back;
/// S_FALSE when cancelled, with the list as it was; S_OK at once for an effect without a
/// dialog; E_POINTER for a request without a list or count.
HRESULT runDialog(const DialogRequest& request);

}  // namespace qx::dialogs
