#include "effects/dialogs/DialogFactory.h"

#include "effects/dialogs/3DCubeDialog.h"
#include "effects/dialogs/3DRotationDialog.h"
#include "effects/dialogs/DeplacementDialog.h"
#include "effects/dialogs/FadeDialog.h"
#include "effects/dialogs/FreeMoveDialog.h"
#include "effects/dialogs/OldMovieDialog.h"
#include "effects/dialogs/RippleDialog.h"

namespace qx::dialogs {

namespace {

// The slots each dialog edits: its table must name them all.
size_t slotsOf(LONG resource)
{
    switch (resource) {
    case 201: return 4;
    case 202: return 8;
    case 209: return COldMovieDialog::kEdits + COldMovieDialog::kSliders;
    case 211: return C3DCubeDialog::kRotations + 1;
    case 207: return C3DRotationDialog::kRotations + C3DRotationDialog::kPositions;
    default: return 1;
    }
}

std::unique_ptr<PropertiesDialog> makeEmptyDialog(const DialogRequest& request)
{
    const ParamTable table = request.table;
    switch (dialogResource(request.effectId)) {
    case 201: return std::make_unique<CDeplacementDialog>(table, request.picture, request.aspect);
    case 202: return std::make_unique<CFreeMoveDialog>(table, request.picture, request.aspect);
    case 210: return std::make_unique<CFadeDialog>();
    case 209: return std::make_unique<COldMovieDialog>(table);
    case 208: return std::make_unique<CRippleDialog>(table);
    case 211: return std::make_unique<C3DCubeDialog>(table);
    case 207: return std::make_unique<C3DRotationDialog>(table, request.picture, request.preview);
    default: return nullptr;
    }
}

}  // namespace

std::unique_ptr<PropertiesDialog> makeDialog(const DialogRequest& request)
{
    const LONG resource = dialogResource(request.effectId);
    if (resource == 0 || !request.params || request.table.size() < slotsOf(resource)) return nullptr;
    std::unique_ptr<PropertiesDialog> dialog = makeEmptyDialog(request);
    dialog->load(ConstParamSpan(request.params, kMaxParams));
    return dialog;
}

void storeResult(const PropertiesDialog& dialog, const DialogRequest& request)
{
    dialog.store(ParamSpan(request.params, kMaxParams));
    if (const auto count = dialog.storedCount()) *request.paramCount = *count;
}

HRESULT runDialog(const DialogRequest& request)
{
    if (dialogResource(request.effectId) == 0) return S_OK;
    if (!request.params || !request.paramCount) return E_POINTER;
    const std::unique_ptr<PropertiesDialog> dialog = makeDialog(request);
    if (!dialog) return E_INVALIDARG;
    if (dialog->exec() != QDialog::Accepted) return S_FALSE;
    storeResult(*dialog, request);
    return S_OK;
}

}  // namespace qx::dialogs
