#include "effects/dialogs/FreeMoveDialog.h"

#include "effects/dialogs/RectangleArea.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cassert>

namespace qx::dialogs {

namespace {

struct ZoneControls {
    int picture;
    int keepProportions;
    std::array<int, 4> edits;  // left, top, right, bottom; each edit's spin control has the next id
};
constexpr ZoneControls kSourceControls{213, 203, {223, 225, 227, 229}};
constexpr ZoneControls kDestinationControls{214, 204, {231, 233, 235, 237}};

// The boxes show percent; the list holds thousandths.
constexpr LONG kThousandthsPerPercent = 10;

}  // namespace

CFreeMoveDialog::CFreeMoveDialog(ParamTable table, const Picture& picture, float aspect)
    : PropertiesDialog(202, "Propriétés du déplacement libre"), table_(table)
{
    assert(table.size() >= 8);
    zones_[1].firstSlot = 4;
    auto* row = new QHBoxLayout;
    row->addWidget(makeZone(zones_[0], "Zone source", picture, aspect));
    row->addWidget(makeZone(zones_[1], "Zone destination", picture, aspect));
    body()->addLayout(row);
}

QGroupBox* CFreeMoveDialog::makeZone(Zone& zone, const QString& title, const Picture& picture, float aspect)
{
    const ZoneControls& controls = zone.firstSlot == 0 ? kSourceControls : kDestinationControls;
    auto* group = new QGroupBox(title);
    auto* column = new QVBoxLayout(group);
    zone.area = new RectangleArea(picture, aspect, controls.picture);
    zone.keepProportions = new QCheckBox("Conserver les proportions");
    zone.keepProportions->setObjectName(QString("check%1").arg(controls.keepProportions));
    auto* form = new QFormLayout;
    for (size_t side = 0; side < 4; ++side) {
        const ParamDescriptor& param = table_[zone.firstSlot + side];
        QSpinBox* box = makeSpinBox(param, controls.edits[side]);
        box->setRange(param.minimum / kThousandthsPerPercent, param.maximum / kThousandthsPerPercent);
        box->setSuffix(" %");
        zone.percent[side] = box;
        form->addRow(param.caption, box);
        connect(box, &QSpinBox::valueChanged, this, [this, &zone] { moveRectangle(zone); });
    }
    column->addWidget(zone.area);
    column->addWidget(zone.keepProportions);
    column->addLayout(form);

    zone.area->onDragged([this, &zone] { showRectangle(zone); });
    connect(zone.keepProportions, &QCheckBox::toggled, this, [this, &zone](bool on) {
        zone.area->picker().setKeepProportions(on);
        showRectangle(zone);
    });
    return group;
}

void CFreeMoveDialog::showRectangle(Zone& zone)
{
    const auto sides = zone.area->picker().sides();
    for (size_t side = 0; side < 4; ++side) {
        // The rectangle is the source of this change: the boxes must not move it back.
        const QSignalBlocker quiet(zone.percent[side]);
        zone.percent[side]->setValue(int(sides[side] / kThousandthsPerPercent));
    }
    zone.area->update();
}

void CFreeMoveDialog::moveRectangle(Zone& zone)
{
    std::array<LONG, 4> sides{};
    for (size_t side = 0; side < 4; ++side) sides[side] = zone.percent[side]->value() * kThousandthsPerPercent;
    zone.area->picker().setSides(sides);
    zone.area->update();
}

void CFreeMoveDialog::load(ConstParamSpan values)
{
    for (Zone& zone : zones_) {
        for (size_t side = 0; side < 4; ++side) {
            const QSignalBlocker quiet(zone.percent[side]);
            zone.percent[side]->setValue(
                int(clampTo(table_[zone.firstSlot + side], values[zone.firstSlot + side]) / kThousandthsPerPercent));
        }
        moveRectangle(zone);
    }
}

void CFreeMoveDialog::store(ParamSpan values) const
{
    for (const Zone& zone : zones_)
        for (size_t side = 0; side < 4; ++side)
            values[zone.firstSlot + side] = zone.percent[side]->value() * kThousandthsPerPercent;
}

}  // namespace qx::dialogs
