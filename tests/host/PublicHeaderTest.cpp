// The public C header that hosts compile against names the same identifiers and codes as
// the library: a typo there would make a host ask for a class or interface nobody has.
#include "filters/Compositor.h"
#include "filters/CropTransform.h"
#include "filters/FlashAnimation.h"
#include "filters/SceneDetect.h"
#include "host/DynamicEffect.h"
#include "host/ObjectTables.h"

#include <array>
#include <cstring>
#include <utility>

namespace {

// Taken before the public header defines the codes as macros.
constexpr std::array kLibraryCodes = {qx::S_OK,
                                      qx::S_FALSE,
                                      qx::E_NOTIMPL,
                                      qx::E_NOINTERFACE,
                                      qx::E_POINTER,
                                      qx::E_FAIL,
                                      qx::E_UNEXPECTED,
                                      qx::E_OUTOFMEMORY,
                                      qx::E_INVALIDARG,
                                      qx::CLASS_E_NOAGGREGATION,
                                      qx::CLASS_E_CLASSNOTAVAILABLE,
                                      qx::REGDB_E_READREGDB,
                                      qx::REGDB_E_WRITEREGDB,
                                      qx::REGDB_E_INVALIDVALUE,
                                      qx::REGDB_E_CLASSNOTREG,
                                      qx::CO_E_CLASSSTRING,
                                      qx::CO_E_DLLNOTFOUND,
                                      qx::CO_E_ERRORINDLL,
                                      qx::HRESULT_FILE_NOT_FOUND,
                                      qx::DXTERR_UNINITIALIZED};

constexpr std::array kLibraryGuids = {
    qx::CQXDynamicEffect::clsid,
    qx::CQXCropTransform::clsid,
    qx::CQXCompositor::clsid,
    qx::CQXSceneDetect::clsid,
    qx::CFlashAnimation::clsid,
    qx::CLSID_Anim3DVideoSource,
    qx::IUnknown::iid,
    qx::IClassFactory::iid,
    qx::transform::IDXTransform::iid,
    qx::transform::IDXEffect::iid,
    qx::transform::IDXRawSurface::iid,
    qx::IQXDynamicEffect::iid,
    qx::IQXCropTransform::iid,
    qx::IQXCompositor::iid,
    qx::IQXSceneDetect::iid,
    qx::IFlashAnimation::iid,
};

}  // namespace

#include "include/qxdynamiceffects/QXDynamicEffects.h"

#include <gtest/gtest.h>

namespace {

TEST(PublicHeader, NamesTheLibrarysCodesAndIdentifiers)
{
    const std::array publicCodes = {S_OK,
                                    S_FALSE,
                                    E_NOTIMPL,
                                    E_NOINTERFACE,
                                    E_POINTER,
                                    E_FAIL,
                                    E_UNEXPECTED,
                                    E_OUTOFMEMORY,
                                    E_INVALIDARG,
                                    CLASS_E_NOAGGREGATION,
                                    CLASS_E_CLASSNOTAVAILABLE,
                                    REGDB_E_READREGDB,
                                    REGDB_E_WRITEREGDB,
                                    REGDB_E_INVALIDVALUE,
                                    REGDB_E_CLASSNOTREG,
                                    CO_E_CLASSSTRING,
                                    CO_E_DLLNOTFOUND,
                                    CO_E_ERRORINDLL,
                                    QX_E_FILE_NOT_FOUND,
                                    DXTERR_UNINITIALIZED};
    EXPECT_EQ(publicCodes, kLibraryCodes);

    const std::array publicGuids = {
        CLSID_QXDynamicEffect, CLSID_QXCropTransform,   CLSID_QXCompositor, CLSID_QXSceneDetect,
        CLSID_FlashAnimation,  CLSID_Anim3DVideoSource, IID_IUnknown,       IID_IClassFactory,
        IID_IDXTransform,      IID_IDXEffect,           IID_IDXRawSurface,  IID_IQXDynamicEffect,
        IID_IQXCropTransform,  IID_IQXCompositor,       IID_IQXSceneDetect, IID_IFlashAnimation,
    };
    static_assert(sizeof(GUID) == sizeof(qx::GUID));
    ASSERT_EQ(publicGuids.size(), kLibraryGuids.size());
    for (size_t i = 0; i < publicGuids.size(); ++i) {
        EXPECT_EQ(std::memcmp(&publicGuids[i], &kLibraryGuids[i], sizeof(GUID)), 0)
            << "identifier " << i << ": " << qx::formatGuid(kLibraryGuids[i]);
    }
}

TEST(PublicHeader, StringsMadeByTheHostAreTheLibrarysBstr)
{
    BSTR text = QxSysAllocString(u"Fondu");
    EXPECT_EQ(qx::SysStringLen(text), 5u);
    qx::SysFreeString(text);
    qx::BSTR made = qx::SysAllocString(u"Noir");
    EXPECT_EQ(QxSysStringLen(made), 4u);
    EXPECT_EQ(made[4], u'\0');
    QxSysFreeString(made);
}

}  // namespace
