#include "host/ObjectTables.h"

#include "filters/3DTransform.h"
#include "filters/Anim3DVideoSource.h"
#include "filters/Compositor.h"
#include "filters/CropTransform.h"
#include "filters/FlashAnimation.h"
#include "filters/Overlay.h"
#include "filters/SceneDetect.h"
#include "host/DynamicEffect.h"
#include "platform/media/MediaType.h"

#include <array>

namespace qx {

namespace {

// The rows of the object map; adding a class is adding its line, in the order of the
// module's type library.
constexpr std::array kObjectMap = {
    objectEntry<CQXDynamicEffect>({"QXDynamicEffect", 5, 103}),
    objectEntry<CQXCropTransform>({"QXCropTransform", 4, 125}),
    objectEntry<CQX3DTransform>({"QX3DTransform", 3, 127}),
    objectEntry<CQXCompositor>({"QXCompositor", 2, 128}),
    objectEntry<CQXOverlay>({"QXOverlay", 2, 129}),
    objectEntry<CQXSceneDetect>({"QXSceneDetect", 1, 130}),
    objectEntry<CFlashAnimation>({"FlashAnimation", 1, 131}),
};

constexpr media::AMOVIESETUP_MEDIATYPE kAnim3DVideoSourceTypes[] = {{&media::MEDIATYPE_Video, &media::GUID_NULL}};

constexpr media::AMOVIESETUP_PIN kAnim3DVideoSourcePins[] = {{
    .strName = u"Output",
    .bRendered = false,
    .bOutput = true,
    .bZero = false,
    .bMany = false,
    .clsConnectsToFilter = nullptr,
    .strConnectsToPin = nullptr,
    .nMediaTypes = 1,
    .lpMediaType = kAnim3DVideoSourceTypes,
}};

/// MERIT_NORMAL.
constexpr DWORD kMeritNormal = 0x200000;

}  // namespace

const media::AMOVIESETUP_FILTER sudAnim3DVideoSource = {
    .clsID = &CLSID_Anim3DVideoSource,
    .strName = u"Quorvel 3D Anim Video Source",
    .dwMerit = kMeritNormal,
    .nPins = 1,
    .lpPin = kAnim3DVideoSourcePins,
};

std::span<const ObjectMapEntry> ObjectMap() { return kObjectMap; }

// The template table: one row, the 3D animation source.
constexpr std::array kFactoryTemplates = {
    CFactoryTemplate{u"Quorvel 3D Anim Video Source", &CLSID_Anim3DVideoSource, NewObject<CAnim3DVideoSource>, nullptr,
                     &sudAnim3DVideoSource},
};

std::span<const CFactoryTemplate> FactoryTemplates() { return kFactoryTemplates; }

}  // namespace qx
