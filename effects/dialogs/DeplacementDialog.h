#pragma once
// "Propriétés du déplacement", the dialog of the pans and zooms (effects 0 to 5): the
// user drags the region to show over the picture; its sides, in thousandths of the frame
// and multiples of 10, are the four values of the list.
#include "effects/dialogs/DialogRequest.h"
#include "effects/dialogs/PropertiesDialog.h"

#include <array>

class QCheckBox;
class QLabel;

namespace qx::dialogs {

class RectangleArea;

class CDeplacementDialog : public PropertiesDialog {
public:
    /// `table` gives the captions of the four read-outs, left, top, right, bottom.
    CDeplacementDialog(ParamTable table, const Picture& picture, float aspect);

    void load(ConstParamSpan values) override;
    void store(ParamSpan values) const override;
    std::optional<LONG> storedCount() const override { return 4; }

private:
    void updateReadouts();

    ParamTable table_;
    RectangleArea* area_;
    QCheckBox* keepProportions_;
    std::array<QLabel*, 4> readouts_{};
};

}  // namespace qx::dialogs
