#pragma once
// "Propriétés du déplacement libre", the dialog of the free move (effect 6): two
// pictures, "Zone source" and "Zone destination", each with its dragged rectangle and
// four edit boxes in percent. Dragging writes the boxes, a box moves the rectangle; the
// list gets the boxes in thousandths, source sides first.
#include "effects/dialogs/DialogRequest.h"
#include "effects/dialogs/PropertiesDialog.h"

#include <array>

class QCheckBox;
class QGroupBox;

namespace qx::dialogs {

class RectangleArea;

class CFreeMoveDialog : public PropertiesDialog {
public:
    /// `table` gives the captions and ranges of the eight sides, source first.
    CFreeMoveDialog(ParamTable table, const Picture& picture, float aspect);

    void load(ConstParamSpan values) override;
    void store(ParamSpan values) const override;
    std::optional<LONG> storedCount() const override { return 8; }

private:
    /// One picture with its check box and its four boxes (left, top, right, bottom).
    struct Zone {
        RectangleArea* area = nullptr;
        QCheckBox* keepProportions = nullptr;
        std::array<QSpinBox*, 4> percent{};
        size_t firstSlot = 0;
    };

    QGroupBox* makeZone(Zone& zone, const QString& title, const Picture& picture, float aspect);
    /// The boxes from the rectangle, after a drag.
    void showRectangle(Zone& zone);
    /// The rectangle from the boxes, after an edit.
    void moveRectangle(Zone& zone);

    ParamTable table_;
    std::array<Zone, 2> zones_;
};

}  // namespace qx::dialogs
