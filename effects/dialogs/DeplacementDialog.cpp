#include "effects/dialogs/DeplacementDialog.h"

#include "effects/dialogs/RectangleArea.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <cassert>

namespace qx::dialogs {

namespace {

constexpr int kPictureControl = 201;
constexpr int kKeepProportionsControl = 203;

}  // namespace

CDeplacementDialog::CDeplacementDialog(ParamTable table, const Picture& picture, float aspect)
    : PropertiesDialog(201, "Propriétés du déplacement"), table_(table),
      area_(new RectangleArea(picture, aspect, kPictureControl)),
      keepProportions_(new QCheckBox("Conserver les proportions"))
{
    assert(table.size() >= 4);
    keepProportions_->setObjectName(QString("check%1").arg(kKeepProportionsControl));

    auto* selection = new QGroupBox("Zone sélectionnée");
    auto* form = new QFormLayout(selection);
    // Read-outs in the order of the resources: left, right, top, bottom.
    for (const int side : {0, 2, 1, 3}) {
        readouts_[size_t(side)] = new QLabel;
        readouts_[size_t(side)]->setObjectName(QString("readout%1").arg(side));
        form->addRow(table[size_t(side)].caption, readouts_[size_t(side)]);
    }

    auto* pictureColumn = new QVBoxLayout;
    pictureColumn->addWidget(area_);
    pictureColumn->addWidget(keepProportions_);
    auto* row = new QHBoxLayout;
    row->addLayout(pictureColumn);
    row->addWidget(selection, 0, Qt::AlignTop);
    body()->addWidget(new QLabel("Sélectionnez la zone à mettre en valeur pendant le déplacement"));
    body()->addLayout(row);

    area_->onDragged([this] { updateReadouts(); });
    connect(keepProportions_, &QCheckBox::toggled, this, [this](bool on) {
        area_->picker().setKeepProportions(on);
        area_->update();
        updateReadouts();
    });
    updateReadouts();
}

void CDeplacementDialog::load(ConstParamSpan values)
{
    area_->picker().setSides({values[0], values[1], values[2], values[3]});
    area_->update();
    updateReadouts();
}

void CDeplacementDialog::store(ParamSpan values) const
{
    const auto sides = area_->picker().sides();
    std::copy(sides.begin(), sides.end(), values.begin());
}

void CDeplacementDialog::updateReadouts()
{
    const auto sides = area_->picker().sides();
    for (size_t side = 0; side < sides.size(); ++side) readouts_[side]->setNum(int(sides[side]));
}

}  // namespace qx::dialogs
