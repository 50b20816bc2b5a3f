#include "effects/dialogs/FadeDialog.h"

#include <QGroupBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace qx::dialogs {

namespace {

constexpr int kSwatchControl = 246;

// A COLORREF holds red in its lowest byte, then green, then blue.
QColor fromColorRef(LONG color)
{
    const auto bits = ULONG(color);
    return QColor(int(bits & 0xFF), int((bits >> 8) & 0xFF), int((bits >> 16) & 0xFF));
}

}  // namespace

CFadeDialog::CFadeDialog() : PropertiesDialog(210, "Fondu"), swatch_(new QPushButton)
{
    swatch_->setObjectName(QString("button%1").arg(kSwatchControl));
    swatch_->setFixedSize(120, 40);
    swatch_->setFocusPolicy(Qt::NoFocus);
    auto* group = new QGroupBox("Couleur du fondu");
    auto* layout = new QVBoxLayout(group);
    layout->addWidget(swatch_, 0, Qt::AlignCenter);
    body()->addWidget(group);
    load(std::array<LONG, kMaxParams>{});
}

void CFadeDialog::load(ConstParamSpan values)
{
    color_ = values[0];
    swatch_->setStyleSheet(QString("background-color: %1; border: 1px solid black;").arg(fromColorRef(color_).name()));
}

void CFadeDialog::store(ParamSpan values) const { values[0] = color_; }

}  // namespace qx::dialogs
