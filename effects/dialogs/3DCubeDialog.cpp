#include "effects/dialogs/3DCubeDialog.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cassert>

namespace qx::dialogs {

namespace {

// The edits of the rotations in the order of the list; the depth's slider.
constexpr int kRotationEdits[C3DCubeDialog::kRotations] = {227, 229, 235, 237, 239, 241};
constexpr int kDepthSlider = 231;

}  // namespace

C3DCubeDialog::C3DCubeDialog(ParamTable table) : PropertiesDialog(211, "Propriétés de la rotation"), table_(table)
{
    assert(table.size() >= kRotations + 1);
    auto* rotation = new QGroupBox("Rotation");
    auto* grid = new QGridLayout(rotation);
    grid->addWidget(new QLabel("Rotation initiale"), 0, 1);
    grid->addWidget(new QLabel("Rotation finale"), 0, 2);
    for (size_t slot = 0; slot < kRotations; ++slot) {
        const int row = 1 + int(slot / 2), column = 1 + int(slot % 2);
        if (column == 1) grid->addWidget(new QLabel(table[slot].caption), row, 0);
        rotations_[slot] = makeSpinBox(table[slot], kRotationEdits[slot]);
        grid->addWidget(rotations_[slot], row, column);
    }
    const ParamDescriptor& depth = table[kRotations];
    depth_ = makeSlider(depth, kDepthSlider);
    auto* depthGroup = new QGroupBox(depth.caption);
    auto* depthLayout = new QVBoxLayout(depthGroup);
    depthLayout->addWidget(withValue(depth_));
    body()->addWidget(rotation);
    body()->addWidget(depthGroup);
}

void C3DCubeDialog::load(ConstParamSpan values)
{
    for (size_t slot = 0; slot < kRotations; ++slot) rotations_[slot]->setValue(clampTo(table_[slot], values[slot]));
    depth_->setValue(clampTo(table_[kRotations], values[kRotations]));
}

void C3DCubeDialog::store(ParamSpan values) const
{
    for (size_t slot = 0; slot < kRotations; ++slot) values[slot] = rotations_[slot]->value();
    values[kRotations] = depth_->value();
}

}  // namespace qx::dialogs
