#pragma once
// "Propriétés de la rotation", the dialog of the cube (effect 5000): the rotation about
// each axis at the start and at the end, in degrees, and how far the cube moves away.
#include "effects/dialogs/PropertiesDialog.h"

#include <array>

class QSlider;
class QSpinBox;

namespace qx::dialogs {

class C3DCubeDialog : public PropertiesDialog {
public:
    /// `table` gives the captions and ranges of the six rotations and the depth.
    explicit C3DCubeDialog(ParamTable table);

    void load(ConstParamSpan values) override;
    void store(ParamSpan values) const override;

    static constexpr size_t kRotations = 6;

private:
    ParamTable table_;
    std::array<QSpinBox*, kRotations> rotations_{};  // X start, X end, Y start, Y end, Z start, Z end
    QSlider* depth_;
};

}  // namespace qx::dialogs
