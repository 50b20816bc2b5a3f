#pragma once
// The module's two tables of classes: the object map (ATL-style class factories) and the
// class factory templates (CMyClassFactory), with the set-up data of the source filter.
#include "host/FactoryTemplate.h"
#include "host/ObjectMap.h"

#include <span>

namespace qx {

inline constexpr CLSID CLSID_Anim3DVideoSource = guid("{0062AFE3-170C-4BD6-8E9D-C68234E377E1}");

/// The filter set-up data of the 3D animation source: one output pin of video.
extern const media::AMOVIESETUP_FILTER sudAnim3DVideoSource;

std::span<const CFactoryTemplate> FactoryTemplates();

}  // namespace qx
