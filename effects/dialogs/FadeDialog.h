#pragma once
// "Fondu", the dialog of the fades (effects 7 and 8): it shows the fade colour in a
// swatch and gives it back as it came. The colour itself is chosen by the editor's own
// controls, never here.
#include "effects/dialogs/PropertiesDialog.h"

class QPushButton;

namespace qx::dialogs {

class CFadeDialog : public PropertiesDialog {
public:
    CFadeDialog();

    void load(ConstParamSpan values) override;
    void store(ParamSpan values) const override;

    LONG color() const { return color_; }

private:
    LONG color_ = 0;
    QPushButton* swatch_;
};

}  // namespace qx::dialogs
