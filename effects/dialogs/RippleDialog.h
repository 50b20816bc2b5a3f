#pragma once
// "Gouttes d'eau", the dialog of the water drops (effect 2001): one slider for the drops
// that fall at each frame.
#include "effects/dialogs/PropertiesDialog.h"

class QSlider;

namespace qx::dialogs {

class CRippleDialog : public PropertiesDialog {
public:
    explicit CRippleDialog(ParamTable table);

    void load(ConstParamSpan values) override;
    void store(ParamSpan values) const override;

private:
    ParamTable table_;
    QSlider* drops_;
};

}  // namespace qx::dialogs
