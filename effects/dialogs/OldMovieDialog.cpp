#include "effects/dialogs/OldMovieDialog.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QSlider>
#include <QSpinBox>

#include <cassert>

namespace qx::dialogs {

namespace {

// Edits 233 to 243 (each with its spin control at the next id), then sliders 245 to 247.
constexpr int kFirstEdit = 233;
constexpr int kFirstSlider = 245;

}  // namespace

COldMovieDialog::COldMovieDialog(ParamTable table) : PropertiesDialog(209, "Film ancien"), table_(table)
{
    assert(table.size() >= kEdits + kSliders);
    auto* noise = new QGroupBox("Niveaux des bruits :");
    auto* noiseForm = new QFormLayout(noise);
    for (size_t i = 0; i < kEdits; ++i) {
        edits_[i] = makeSpinBox(table[i], kFirstEdit + 2 * int(i));
        noiseForm->addRow(table[i].caption, edits_[i]);
    }
    auto* colours = new QGroupBox("Couleurs");
    auto* colourForm = new QFormLayout(colours);
    for (size_t i = 0; i < kSliders; ++i) {
        const ParamDescriptor& param = table[kEdits + i];
        sliders_[i] = makeSlider(param, kFirstSlider + int(i));
        colourForm->addRow(param.caption, withValue(sliders_[i]));
    }
    auto* row = new QHBoxLayout;
    row->addWidget(noise, 0, Qt::AlignTop);
    row->addWidget(colours, 0, Qt::AlignTop);
    body()->addLayout(row);
}

void COldMovieDialog::load(ConstParamSpan values)
{
    for (size_t i = 0; i < kEdits; ++i) edits_[i]->setValue(clampTo(table_[i], values[i]));
    for (size_t i = 0; i < kSliders; ++i) sliders_[i]->setValue(clampTo(table_[kEdits + i], values[kEdits + i]));
}

void COldMovieDialog::store(ParamSpan values) const
{
    for (size_t i = 0; i < kEdits; ++i) values[i] = edits_[i]->value();
    for (size_t i = 0; i < kSliders; ++i) values[kEdits + i] = sliders_[i]->value();
}

}  // namespace qx::dialogs
