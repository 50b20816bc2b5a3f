#include "effects/dialogs/RippleDialog.h"

#include <QGroupBox>
#include <QSlider>
#include <QVBoxLayout>

#include <cassert>

namespace qx::dialogs {

CRippleDialog::CRippleDialog(ParamTable table) : PropertiesDialog(208, "Gouttes d'eau"), table_(table)
{
    assert(!table.empty());
    drops_ = makeSlider(table[0], 232);
    drops_->setTickPosition(QSlider::TicksBelow);
    drops_->setTickInterval(1);
    drops_->setMinimumWidth(240);
    auto* group = new QGroupBox(table[0].caption);
    auto* layout = new QVBoxLayout(group);
    layout->addWidget(withValue(drops_));
    body()->addWidget(group);
}

void CRippleDialog::load(ConstParamSpan values) { drops_->setValue(clampTo(table_[0], values[0])); }

void CRippleDialog::store(ParamSpan values) const { values[0] = drops_->value(); }

}  // namespace qx::dialogs
