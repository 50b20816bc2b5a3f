#pragma once
// The base of the seven property dialogs: a modal Qt dialog in French with the buttons
// "OK" and "Annuler", that takes its values from a parameter list and gives them back.
// Each control's range comes from the effect's parameter table; a list whose values lie
// outside it is clamped into the controls, so OK always gives values in range.
#include "effects/ParamTable.h"

#include <QDialog>

#include <optional>
#include <span>

class QSlider;
class QSpinBox;
class QVBoxLayout;

namespace qx::dialogs {

using ParamSpan = std::span<LONG, kMaxParams>;
using ConstParamSpan = std::span<const LONG, kMaxParams>;

class PropertiesDialog : public QDialog {
public:
    PropertiesDialog(LONG resource, const QString& title);

    /// The dialog's resource number, which names it (201 to 211).
    LONG resource() const { return resource_; }

    /// Sets the controls from the list.
    virtual void load(ConstParamSpan values) = 0;
    /// Writes the controls' values to the positions of the list that the dialog edits.
    virtual void store(ParamSpan values) const = 0;
    /// The count the dialog writes with its values on OK; most leave the caller's count.
    virtual std::optional<LONG> storedCount() const { return std::nullopt; }

protected:
    /// Where a dialog puts its controls, above the buttons.
    QVBoxLayout* body() const { return body_; }

private:
    LONG resource_;
    QVBoxLayout* body_;
};

/// The text the dialogs' font stands for; it resolves to a sans-serif face of the system.
inline constexpr const char* kDialogFont = "MS Shell Dlg";

/// An edit box with arrows over the range of `param`, named `edit<control>` (and its
/// arrows are the spin control of the next id).
QSpinBox* makeSpinBox(const ParamDescriptor& param, int control);
/// A horizontal slider over the range of `param`, named `slider<control>`.
QSlider* makeSlider(const ParamDescriptor& param, int control);
/// A slider with the value it stands at written beside it.
QWidget* withValue(QSlider* slider);

/// `value` cut to the range of `param`.
LONG clampTo(const ParamDescriptor& param, LONG value);

}  // namespace qx::dialogs
