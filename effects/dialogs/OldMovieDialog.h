#pragma once
// "Film ancien", the dialog of the old film (effect 9): six edit boxes for the levels of
// wear and three sliders for the colours, in the order of the list.
#include "effects/dialogs/PropertiesDialog.h"

#include <array>

class QSlider;
class QSpinBox;

namespace qx::dialogs {

class COldMovieDialog : public PropertiesDialog {
public:
    /// `table` gives the captions and ranges of the nine values.
    explicit COldMovieDialog(ParamTable table);

    void load(ConstParamSpan values) override;
    void store(ParamSpan values) const override;

    static constexpr size_t kEdits = 6;
    static constexpr size_t kSliders = 3;

private:
    ParamTable table_;
    std::array<QSpinBox*, kEdits> edits_{};
    std::array<QSlider*, kSliders> sliders_{};
};

}  // namespace qx::dialogs
