#pragma once
// "Propriétés du déplacement 3D", the dialog of the 3D move (effect 5002): the rotations
// and the position of the picture at the start ("Début") and at the end ("Fin"), each
// under a preview that the scene renders at progress 0 and 1 with the current values.
#include "effects/dialogs/DialogRequest.h"
#include "effects/dialogs/PropertiesDialog.h"

#include <array>
#include <vector>

class QSlider;
class QSpinBox;

namespace qx::dialogs {

class PreviewArea;

class C3DRotationDialog : public PropertiesDialog {
public:
    /// `table` gives the captions and ranges of the twelve values; `preview` renders the
    /// previews (none: they show the picture as it is).
    C3DRotationDialog(ParamTable table, const Picture& picture, PreviewRenderer* preview);

    void load(ConstParamSpan values) override;
    void store(ParamSpan values) const override;

    static constexpr size_t kRotations = 6;  // slots 0 to 5: edits
    static constexpr size_t kPositions = 6;  // slots 6 to 11: sliders

    /// The preview at the start (0) or at the end (1).
    const PreviewArea& preview(size_t end) const { return *previews_[end]; }

private:
    QWidget* makeColumn(size_t end, const QString& title);
    /// Renders the preview of the start (0) or of the end (1) with the current values.
    void redraw(size_t end);

    ParamTable table_;
    std::vector<uint32_t> picture_;
    int pictureWidth_;
    int pictureHeight_;
    PreviewRenderer* renderer_;
    std::array<QSpinBox*, kRotations> rotations_{};
    std::array<QSlider*, kPositions> positions_{};
    std::array<PreviewArea*, 2> previews_{};
};

}  // namespace qx::dialogs
