#pragma once
// The library of the property dialogs, loaded on the first call that shows one and kept
// for the life of the process (a toolkit does not survive being unloaded).
#include "effects/dialogs/DialogRequest.h"

namespace qx {

/// The dialogs' entry point; null when the library can't be found or loaded.
dialogs::ShowPropertiesDialogFunction DialogEntryPoint();

}  // namespace qx
