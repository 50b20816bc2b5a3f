#include "effects/dialogs/3DRotationDialog.h"

#include "effects/dialogs/PreviewArea.h"
#include "effects/dialogs/RectangleArea.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cassert>

namespace qx::dialogs {

namespace {

// Controls in the order of the list: the rotations' edits, then the positions' sliders.
constexpr int kRotationEdits[C3DRotationDialog::kRotations] = {227, 229, 235, 237, 239, 241};
constexpr int kPositionSliders[C3DRotationDialog::kPositions] = {248, 251, 249, 252, 250, 253};
constexpr int kPreviews[2] = {254, 255};
constexpr QSize kPreviewSize{240, 180};

}  // namespace

C3DRotationDialog::C3DRotationDialog(ParamTable table, const Picture& picture, PreviewRenderer* preview)
    : PropertiesDialog(207, "Propriétés du déplacement 3D"), table_(table),
      pictureWidth_(picture.empty() ? 0 : picture.width), pictureHeight_(picture.empty() ? 0 : picture.height),
      renderer_(preview)
{
    assert(table.size() >= kRotations + kPositions);
    if (!picture.empty())
        picture_.assign(picture.samples, picture.samples + size_t(picture.width) * size_t(picture.height));
    auto* row = new QHBoxLayout;
    row->addWidget(makeColumn(0, "Début"));
    row->addWidget(makeColumn(1, "Fin"));
    body()->addLayout(row);
}

// The slots of one column are those of its end: even slots for the start, odd for the end.
QWidget* C3DRotationDialog::makeColumn(size_t end, const QString& title)
{
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    previews_[end] = new PreviewArea(kPreviews[end], kPreviewSize);
    auto* group = new QGroupBox(title);
    auto* form = new QFormLayout(group);
    for (size_t slot = end; slot < kRotations; slot += 2) {
        rotations_[slot] = makeSpinBox(table_[slot], kRotationEdits[slot]);
        form->addRow(table_[slot].caption, rotations_[slot]);
        connect(rotations_[slot], &QSpinBox::valueChanged, this, [this, end] { redraw(end); });
    }
    for (size_t i = end; i < kPositions; i += 2) {
        const ParamDescriptor& param = table_[kRotations + i];
        positions_[i] = makeSlider(param, kPositionSliders[i]);
        form->addRow(param.caption, withValue(positions_[i]));
        connect(positions_[i], &QSlider::valueChanged, this, [this, end] { redraw(end); });
    }
    layout->addWidget(previews_[end], 0, Qt::AlignHCenter);
    layout->addWidget(group);
    return column;
}

void C3DRotationDialog::load(ConstParamSpan values)
{
    for (size_t slot = 0; slot < kRotations; ++slot) {
        const QSignalBlocker quiet(rotations_[slot]);
        rotations_[slot]->setValue(clampTo(table_[slot], values[slot]));
    }
    for (size_t i = 0; i < kPositions; ++i) {
        const QSignalBlocker quiet(positions_[i]);
        positions_[i]->setValue(clampTo(table_[kRotations + i], values[kRotations + i]));
    }
    redraw(0);
    redraw(1);
}

void C3DRotationDialog::store(ParamSpan values) const
{
    for (size_t slot = 0; slot < kRotations; ++slot) values[slot] = rotations_[slot]->value();
    for (size_t i = 0; i < kPositions; ++i) values[kRotations + i] = positions_[i]->value();
}

void C3DRotationDialog::redraw(size_t end)
{
    if (picture_.empty()) return;
    std::array<LONG, kRotations + kPositions> values{};
    std::array<LONG, kMaxParams> list{};
    store(list);
    std::copy_n(list.begin(), values.size(), values.begin());
    std::vector<uint32_t> frame = picture_;
    if (renderer_) renderer_->render(values, end == 0 ? 0.0f : 1.0f, frame);
    previews_[end]->setImage(toImage({frame.data(), pictureWidth_, pictureHeight_}));
}

}  // namespace qx::dialogs
