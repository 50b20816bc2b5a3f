#include "effects/dialogs/PropertiesDialog.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

namespace qx::dialogs {

namespace {

// "MS Shell Dlg" at the size of the resources, standing for a sans-serif face here.
QFont dialogFont()
{
    static const bool substituted = [] {
        QFont::insertSubstitutions(kDialogFont, {"DejaVu Sans", "Sans Serif"});
        return true;
    }();
    (void)substituted;
    QFont font(kDialogFont);
    font.setPointSize(9);
    return font;
}

}  // namespace

PropertiesDialog::PropertiesDialog(LONG resource, const QString& title) : resource_(resource), body_(new QVBoxLayout)
{
    setWindowTitle(title);
    setModal(true);
    setFont(dialogFont());

    auto* buttons = new QDialogButtonBox;
    buttons->addButton("OK", QDialogButtonBox::AcceptRole)->setDefault(true);
    buttons->addButton("Annuler", QDialogButtonBox::RejectRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(body_);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

LONG clampTo(const ParamDescriptor& param, LONG value) { return std::clamp(value, param.minimum, param.maximum); }

QSpinBox* makeSpinBox(const ParamDescriptor& param, int control)
{
    auto* box = new QSpinBox;
    box->setObjectName(QString("edit%1").arg(control));
    box->setRange(param.minimum, param.maximum);
    box->setValue(param.defaultValue);
    return box;
}

QSlider* makeSlider(const ParamDescriptor& param, int control)
{
    auto* slider = new QSlider(Qt::Horizontal);
    slider->setObjectName(QString("slider%1").arg(control));
    slider->setRange(param.minimum, param.maximum);
    slider->setValue(param.defaultValue);
    slider->setMinimumWidth(160);
    return slider;
}

QWidget* withValue(QSlider* slider)
{
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* value = new QLabel(QString::number(slider->value()));
    value->setMinimumWidth(value->fontMetrics().horizontalAdvance("-0000"));
    value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QObject::connect(slider, &QSlider::valueChanged, value, [value](int v) { value->setNum(v); });
    layout->addWidget(slider, 1);
    layout->addWidget(value);
    return row;
}

}  // namespace qx::dialogs
