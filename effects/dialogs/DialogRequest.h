#pragma once
// What the effect host hands the property dialogs, which live in a library of their own
// (libqxdynamiceffects-dialogs.so, on Qt Widgets) that the host loads only when a dialog
// is asked for: a host without a display never loads Qt. Both sides are built together,
// so the request is a plain C++ record behind one C entry point.
#include "effects/ParamTable.h"

#include <cstdint>
#include <span>

namespace qx::dialogs {

/// The library's file name and its one entry point, `HRESULT qxShowPropertiesDialog(const DialogRequest*)`.
inline constexpr const char* kLibraryName = "libqxdynamiceffects-dialogs.so";
inline constexpr const char* kEntryPoint = "qxShowPropertiesDialog";

/// The resource number of the dialog of effect `id`, 0 when the effect has none. The
/// host answers for ids without a dialog without loading the library.
constexpr LONG dialogResource(LONG id)
{
    if (id >= 0 && id <= 5) return 201;  // CDeplacementDialog
    switch (id) {
    case 6: return 202;  // CFreeMoveDialog
    case 7:              // CFadeDialog
    case 8: return 210;
    case 9: return 209;     // COldMovieDialog
    case 2001: return 208;  // CRippleDialog
    case 5000: return 211;  // C3DCubeDialog
    case 5002: return 207;  // C3DRotationDialog
    default: return 0;
    }
}

/// A picture the dialogs show: samples B, G, R, A, top-down, rows without padding. A
/// picture with no samples shows as an empty area.
struct Picture {
    const uint32_t* samples = nullptr;
    int32_t width = 0;
    int32_t height = 0;

    bool empty() const { return !samples || width <= 0 || height <= 0; }
};

/// Draws the 3D move over a copy of the picture, for the previews of its dialog; the host
/// gives one, since the scene context belongs to it.
class PreviewRenderer {
public:
    virtual ~PreviewRenderer() = default;
    /// Renders the effect with `values` at `progress` over `frame`, which holds the
    /// picture and receives the result (the picture's size). False when no scene client
    /// could be made: the frame is then left as it was.
    virtual bool render(std::span<const LONG> values, float progress, std::span<uint32_t> frame) = 0;
};

struct DialogRequest {
    LONG effectId = 0;
    /// The effect's parameter table: the captions and ranges of the controls.
    ParamTable table;
    /// The caller's list, at least 16 values: read when the dialog opens, written on OK.
    LONG* params = nullptr;
    /// Written on OK by the two rectangle dialogs only (4 and 8).
    LONG* paramCount = nullptr;
    /// Shape of the frame for the rectangle pickers: width over height.
    float aspect = 1.3333334f;
    Picture picture;
    PreviewRenderer* preview = nullptr;
};

using ShowPropertiesDialogFunction = HRESULT (*)(const DialogRequest*);

}  // namespace qx::dialogs
