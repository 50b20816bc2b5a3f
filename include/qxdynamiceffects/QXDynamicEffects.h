/* QXDynamicEffects: what a host needs to drive the component module
 * libqxdynamiceffects.so from C or C++: the status codes, the class and interface
 * identifiers, and the interfaces as tables of functions, in the order of the objects'
 * own tables. Objects are made by class identifier through the registry (QXCom.h), or
 * through the module's DllGetClassObject; every call returns a status code.
 *
 * Text crosses as BSTR: UTF-16 after a 32-bit byte count, allocated with the C library's
 * malloc, so the QxSysAllocString family below makes and frees the module's strings. */
#ifndef QXDYNAMICEFFECTS_H
#define QXDYNAMICEFFECTS_H

#include <stdbool.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#ifndef __cplusplus
#include <uchar.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t HRESULT;
typedef int32_t LONG; /* 32 bits, as on Windows */
typedef uint32_t ULONG;
typedef uint32_t DWORD;
typedef uint8_t BYTE;
typedef char16_t OLECHAR;
typedef OLECHAR* BSTR;

typedef struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} GUID;
typedef GUID IID;
typedef GUID CLSID;

#define QX_SUCCEEDED(hr) ((HRESULT)(hr) >= 0)
#define QX_FAILED(hr) ((HRESULT)(hr) < 0)

#define S_OK ((HRESULT)0)
#define S_FALSE ((HRESULT)1)
#define E_NOTIMPL ((HRESULT)0x80004001u)
#define E_NOINTERFACE ((HRESULT)0x80004002u)
#define E_POINTER ((HRESULT)0x80004003u)
#define E_FAIL ((HRESULT)0x80004005u)
#define E_UNEXPECTED ((HRESULT)0x8000FFFFu)
#define E_OUTOFMEMORY ((HRESULT)0x8007000Eu)
#define E_INVALIDARG ((HRESULT)0x80070057u)
#define CLASS_E_NOAGGREGATION ((HRESULT)0x80040110u)
#define CLASS_E_CLASSNOTAVAILABLE ((HRESULT)0x80040111u)
#define REGDB_E_READREGDB ((HRESULT)0x80040150u)
#define REGDB_E_WRITEREGDB ((HRESULT)0x80040151u)
#define REGDB_E_INVALIDVALUE ((HRESULT)0x80040153u)
#define REGDB_E_CLASSNOTREG ((HRESULT)0x80040154u)
#define CO_E_CLASSSTRING ((HRESULT)0x800401F3u)
#define CO_E_DLLNOTFOUND ((HRESULT)0x800401F8u)
#define CO_E_ERRORINDLL ((HRESULT)0x800401F9u)
#define QX_E_FILE_NOT_FOUND ((HRESULT)0x80070002u)
#define DXTERR_UNINITIALIZED ((HRESULT)0x887A0001u)

#define QX_DEFINE_GUID(name, d1, d2, d3, b0, b1, b2, b3, b4, b5, b6, b7)                                               \
    static const GUID name __attribute__((unused)) = {d1, d2, d3, {b0, b1, b2, b3, b4, b5, b6, b7}}

/* The module's classes. */
QX_DEFINE_GUID(CLSID_QXDynamicEffect, 0x0E09660B, 0xCA83, 0x487F, 0xA9, 0xDC, 0x02, 0x4B, 0x3B, 0xB6, 0xB2, 0x71);
QX_DEFINE_GUID(CLSID_QXCropTransform, 0x47B46FED, 0x2816, 0x4215, 0x8C, 0x15, 0x3B, 0x7B, 0xA3, 0xEB, 0xE9, 0x27);
QX_DEFINE_GUID(CLSID_QX3DTransform, 0xECE4507C, 0xC47F, 0x456B, 0x8D, 0x60, 0x84, 0x81, 0x40, 0xF0, 0xB9, 0x30);
QX_DEFINE_GUID(CLSID_QXCompositor, 0x318DF0E1, 0x94A1, 0x4DD2, 0x8A, 0x6B, 0x86, 0xC8, 0x31, 0x7E, 0xD2, 0xB0);
QX_DEFINE_GUID(CLSID_QXOverlay, 0x451898E5, 0x51BC, 0x4D99, 0xB0, 0x19, 0x06, 0x58, 0x89, 0x29, 0x9E, 0xB4);
QX_DEFINE_GUID(CLSID_QXSceneDetect, 0xDA50A963, 0x4BB0, 0x4257, 0x85, 0x71, 0x30, 0x16, 0x12, 0x61, 0x33, 0xBB);
QX_DEFINE_GUID(CLSID_FlashAnimation, 0x30CB0B50, 0x3F96, 0x4414, 0x82, 0x26, 0x9D, 0xFD, 0x32, 0x19, 0xB2, 0xCC);
QX_DEFINE_GUID(CLSID_Anim3DVideoSource, 0x0062AFE3, 0x170C, 0x4BD6, 0x8E, 0x9D, 0xC6, 0x82, 0x34, 0xE3, 0x77, 0xE1);

/* Interfaces. */
QX_DEFINE_GUID(IID_IUnknown, 0x00000000, 0x0000, 0x0000, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46);
QX_DEFINE_GUID(IID_IClassFactory, 0x00000001, 0x0000, 0x0000, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46);
QX_DEFINE_GUID(IID_IDXTransform, 0x30A5FB78, 0xE11F, 0x11D1, 0x90, 0x64, 0x00, 0xC0, 0x4F, 0xC2, 0xD0, 0xEC);
QX_DEFINE_GUID(IID_IDXEffect, 0xE31FB81B, 0x1335, 0x11D1, 0x81, 0x89, 0x00, 0x00, 0xF8, 0x75, 0x57, 0xDB);
QX_DEFINE_GUID(IID_IDXRawSurface, 0x6C0E9D2B, 0x4F3A, 0x4B8E, 0x9A, 0x51, 0x2D, 0x7C, 0x3E, 0x8F, 0x1A, 0x60);
QX_DEFINE_GUID(IID_IQXDynamicEffect, 0x9B7DB154, 0xA434, 0x461A, 0xAD, 0x61, 0x48, 0x9D, 0x90, 0x01, 0x91, 0x9B);
QX_DEFINE_GUID(IID_IQXCropTransform, 0xCAA6A444, 0x2E84, 0x4374, 0xBE, 0xB1, 0xD2, 0x76, 0x9D, 0xCA, 0xC9, 0x4C);
QX_DEFINE_GUID(IID_IQX3DTransform, 0x65202EE6, 0xD8BE, 0x4664, 0x84, 0x40, 0xC6, 0x6E, 0xF4, 0x98, 0xFD, 0xBD);
QX_DEFINE_GUID(IID_IQXCompositor, 0x9ECFD2E3, 0x4849, 0x4E79, 0x86, 0x36, 0xA9, 0x97, 0xF2, 0x49, 0x30, 0x3F);
QX_DEFINE_GUID(IID_IQXOverlay, 0xA69ABC00, 0x03E9, 0x423A, 0xAE, 0x17, 0x11, 0x44, 0xD0, 0x86, 0x03, 0xCD);
QX_DEFINE_GUID(IID_IQXSceneDetect, 0x076B736D, 0xE2F5, 0x4F26, 0xB0, 0x48, 0x5E, 0x04, 0x6B, 0x84, 0xBE, 0xB6);
QX_DEFINE_GUID(IID_IFlashAnimation, 0x7A5132A3, 0x1E94, 0x4D6C, 0xAC, 0xF7, 0x5B, 0x0B, 0xB9, 0x51, 0x6E, 0x8F);
QX_DEFINE_GUID(IID_IAnim3DVideoSource, 0xF96A2EFD, 0x6FFC, 0x4C0B, 0x90, 0x5C, 0x07, 0x95, 0xCD, 0x3E, 0x20, 0x3C);

static inline bool QxIsEqualGUID(const GUID* a, const GUID* b) { return memcmp(a, b, sizeof(GUID)) == 0; }

/* BSTR: the module allocates and frees its strings with the same layout. */
static inline BSTR QxSysAllocStringLen(const OLECHAR* text, uint32_t length)
{
    uint32_t* block = (uint32_t*)malloc(sizeof(uint32_t) + ((size_t)length + 1) * sizeof(OLECHAR));
    if (!block) return NULL;
    *block = length * (uint32_t)sizeof(OLECHAR);
    BSTR chars = (BSTR)(block + 1);
    if (text) {
        memcpy(chars, text, (size_t)length * sizeof(OLECHAR));
    } else {
        memset(chars, 0, (size_t)length * sizeof(OLECHAR));
    }
    chars[length] = 0;
    return chars;
}
static inline BSTR QxSysAllocString(const OLECHAR* text)
{
    uint32_t length = 0;
    if (!text) return NULL;
    while (text[length]) ++length;
    return QxSysAllocStringLen(text, length);
}
static inline uint32_t QxSysStringLen(BSTR text)
{
    return text ? ((const uint32_t*)text)[-1] / (uint32_t)sizeof(OLECHAR) : 0;
}
static inline void QxSysFreeString(BSTR text)
{
    if (text) free((uint32_t*)text - 1);
}

#define QX_INTERFACE(name)                                                                                             \
    typedef struct name##Vtbl name##Vtbl;                                                                              \
    typedef struct name {                                                                                              \
        const name##Vtbl* lpVtbl;                                                                                      \
    } name

#define QX_IUNKNOWN_METHODS(Type)                                                                                      \
    HRESULT (*QueryInterface)(Type * This, const IID* riid, void** ppv);                                               \
    ULONG (*AddRef)(Type * This);                                                                                      \
    ULONG (*Release)(Type * This)

/* The members of IDXEffect, which the dual interfaces of the transforms repeat first. */
#define QX_IDXEFFECT_METHODS(Type)                                                                                     \
    QX_IUNKNOWN_METHODS(Type);                                                                                         \
    HRESULT (*get_Capabilities)(Type * This, LONG * pVal);                                                             \
    HRESULT (*get_Progress)(Type * This, float* pVal);                                                                 \
    HRESULT (*put_Progress)(Type * This, float newVal);                                                                \
    HRESULT (*get_StepResolution)(Type * This, float* pVal);                                                           \
    HRESULT (*get_Duration)(Type * This, float* pVal);                                                                 \
    HRESULT (*put_Duration)(Type * This, float newVal)

QX_INTERFACE(IUnknown);
struct IUnknownVtbl {
    QX_IUNKNOWN_METHODS(IUnknown);
};

QX_INTERFACE(IClassFactory);
struct IClassFactoryVtbl {
    QX_IUNKNOWN_METHODS(IClassFactory);
    HRESULT (*CreateInstance)(IClassFactory* This, IUnknown* pUnkOuter, const IID* riid, void** ppv);
    HRESULT (*LockServer)(IClassFactory* This, bool fLock);
};

/* Rectangles in samples, right and bottom exclusive; points in samples. */
typedef struct QXBOUNDS {
    LONG left, top, right, bottom;
} QXBOUNDS;
typedef struct QXPOINT {
    LONG x, y;
} QXPOINT;

/* A surface the host makes over its own frame memory for Setup: width * height samples
 * of 32 bits, bytes B, G, R, A, not premultiplied, top-down, rows without padding. The
 * transform holds the object, and uses the memory, until the next Setup or its release. */
typedef struct DXRAWSURFACEINFO {
    uint32_t* pSamples;
    LONG width;
    LONG height;
} DXRAWSURFACEINFO;

QX_INTERFACE(IDXRawSurface);
struct IDXRawSurfaceVtbl {
    QX_IUNKNOWN_METHODS(IDXRawSurface);
    HRESULT (*GetSurfaceInfo)(IDXRawSurface* This, DXRAWSURFACEINFO* pSurfaceInfo);
};

QX_INTERFACE(IDXTransform);
struct IDXTransformVtbl {
    QX_IUNKNOWN_METHODS(IDXTransform);
    /* Surfaces are objects that answer IDXRawSurface; at most one output. No inputs and
     * no outputs undo the set-up. */
    HRESULT(*Setup)
    (IDXTransform* This, IUnknown* const* punkInputs, ULONG ulNumInputs, IUnknown* const* punkOutputs,
     ULONG ulNumOutputs, DWORD dwFlags);
    /* Renders clipBounds of the input (all when null) at placement in the output. */
    HRESULT(*Execute)
    (IDXTransform* This, const GUID* pRequestID, const QXBOUNDS* pClipBnds, const QXPOINT* pPlacement);
};

QX_INTERFACE(IDXEffect);
struct IDXEffectVtbl {
    QX_IDXEFFECT_METHODS(IDXEffect);
};

QX_INTERFACE(IQXDynamicEffect);
struct IQXDynamicEffectVtbl {
    QX_IDXEFFECT_METHODS(IQXDynamicEffect);
    HRESULT (*get_Index)(IQXDynamicEffect* This, LONG* pVal);
    HRESULT (*put_Index)(IQXDynamicEffect* This, LONG newVal);
    HRESULT (*GetEffectDefaults)(IQXDynamicEffect* This, LONG nIndex, LONG* Params, LONG* nParams);
    HRESULT (*get_Params)(IQXDynamicEffect* This, BSTR* pVal);
    HRESULT (*put_Params)(IQXDynamicEffect* This, BSTR newVal);
    HRESULT (*ShowPropertiesDialog)(IQXDynamicEffect* This, LONG nIndex, LONG* Params, LONG* nParams, void* ltBmp);
    HRESULT (*GetIDFromIdx)(IQXDynamicEffect* This, LONG nIndex, LONG* nID);
    HRESULT (*GetIndexFromID)(IQXDynamicEffect* This, LONG nID, LONG* nIndex);
    HRESULT (*GetEffectsCount)(IQXDynamicEffect* This, LONG* nCount);
    HRESULT (*GetEffectString)(IQXDynamicEffect* This, LONG nIndex, BSTR* bString);
    HRESULT (*HasPropertiesDialog)(IQXDynamicEffect* This, LONG nIndex, BYTE* bHasDialog);
    HRESULT (*get_Source)(IQXDynamicEffect* This, BSTR* pVal);
    HRESULT (*put_Source)(IQXDynamicEffect* This, BSTR newVal);
    HRESULT (*SetGlobalDataPath)(IQXDynamicEffect* This, BSTR szPath);
    HRESULT (*get_AspectRatio)(IQXDynamicEffect* This, float* pVal);
    HRESULT (*put_AspectRatio)(IQXDynamicEffect* This, float newVal);
    HRESULT (*GetEffectCategoryFromIndex)(IQXDynamicEffect* This, LONG nIndex, LONG* Category);
    HRESULT (*GetCategoriesCount)(IQXDynamicEffect* This, LONG* nCount);
    HRESULT (*GetCategoryString)(IQXDynamicEffect* This, LONG nIndex, BSTR* bString);
    HRESULT(*GetCategoryImageFromID)
    (IQXDynamicEffect* This, LONG nCat, BYTE** pImageBits, LONG* nWidth, LONG* nHeight);
    HRESULT(*GetCategoryImageFromIndex)
    (IQXDynamicEffect* This, LONG nIndex, BYTE** pImageBits, LONG* nWidth, LONG* nHeight);
    HRESULT (*GetCategoryIDFromIndex)(IQXDynamicEffect* This, LONG nIndex, LONG* nID);
    HRESULT (*get_Quality)(IQXDynamicEffect* This, LONG* pVal);
    HRESULT (*put_Quality)(IQXDynamicEffect* This, LONG newVal);
    HRESULT (*get_Fps)(IQXDynamicEffect* This, float* pVal);
    HRESULT (*put_Fps)(IQXDynamicEffect* This, float newVal);
    /* The effect's span in seconds (the type library's Duration), apart from IDXEffect's. */
    HRESULT (*get_DurationSeconds)(IQXDynamicEffect* This, double* pVal);
    HRESULT (*put_DurationSeconds)(IQXDynamicEffect* This, double newVal);
    HRESULT (*get_FilterID)(IQXDynamicEffect* This, LONG* pVal);
    HRESULT (*put_FilterID)(IQXDynamicEffect* This, LONG newVal);
    HRESULT (*GetSceneDuration)(IQXDynamicEffect* This, BSTR szScenePath, float* fDuration);
};

QX_INTERFACE(IQXCompositor);
struct IQXCompositorVtbl {
    QX_IDXEFFECT_METHODS(IQXCompositor);
    HRESULT (*get_Opacity)(IQXCompositor* This, float* pVal);
    HRESULT (*put_Opacity)(IQXCompositor* This, float newVal);
    HRESULT (*get_OffsetX)(IQXCompositor* This, float* pVal);
    HRESULT (*put_OffsetX)(IQXCompositor* This, float newVal);
    HRESULT (*get_OffsetY)(IQXCompositor* This, float* pVal);
    HRESULT (*put_OffsetY)(IQXCompositor* This, float newVal);
    HRESULT (*get_Width)(IQXCompositor* This, float* pVal);
    HRESULT (*put_Width)(IQXCompositor* This, float newVal);
    HRESULT (*get_Height)(IQXCompositor* This, float* pVal);
    HRESULT (*put_Height)(IQXCompositor* This, float newVal);
    HRESULT (*get_SrcOffsetX)(IQXCompositor* This, float* pVal);
    HRESULT (*put_SrcOffsetX)(IQXCompositor* This, float newVal);
    HRESULT (*get_SrcOffsetY)(IQXCompositor* This, float* pVal);
    HRESULT (*put_SrcOffsetY)(IQXCompositor* This, float newVal);
    HRESULT (*get_SrcWidth)(IQXCompositor* This, float* pVal);
    HRESULT (*put_SrcWidth)(IQXCompositor* This, float newVal);
    HRESULT (*get_SrcHeight)(IQXCompositor* This, float* pVal);
    HRESULT (*put_SrcHeight)(IQXCompositor* This, float newVal);
    HRESULT (*get_OverlayPath)(IQXCompositor* This, BSTR* pVal);
    HRESULT (*put_OverlayPath)(IQXCompositor* This, BSTR newVal);
    HRESULT (*get_Angle)(IQXCompositor* This, float* pVal);
    HRESULT (*put_Angle)(IQXCompositor* This, float newVal);
    HRESULT (*get_AspectRatio)(IQXCompositor* This, float* pVal);
    HRESULT (*put_AspectRatio)(IQXCompositor* This, float newVal);
    HRESULT (*get_KeyColor)(IQXCompositor* This, ULONG* pVal);
    HRESULT (*put_KeyColor)(IQXCompositor* This, ULONG newVal);
    HRESULT (*get_Similarity)(IQXCompositor* This, ULONG* pVal);
    HRESULT (*put_Similarity)(IQXCompositor* This, ULONG newVal);
    /* Seconds of the clip, apart from IDXEffect's duration. */
    HRESULT (*get_DurationSeconds)(IQXCompositor* This, double* pVal);
    HRESULT (*put_DurationSeconds)(IQXCompositor* This, double newVal);
    HRESULT (*get_MediaStart)(IQXCompositor* This, double* pVal);
    HRESULT (*put_MediaStart)(IQXCompositor* This, double newVal);
};

QX_INTERFACE(IQX3DTransform);
struct IQX3DTransformVtbl {
    QX_IDXEFFECT_METHODS(IQX3DTransform);
    HRESULT (*get_Quality)(IQX3DTransform* This, LONG* pVal);
    HRESULT (*put_Quality)(IQX3DTransform* This, LONG newVal);
    HRESULT (*get_Source)(IQX3DTransform* This, BSTR* pVal);
    HRESULT (*put_Source)(IQX3DTransform* This, BSTR newVal);
    HRESULT (*get_AspectRatio)(IQX3DTransform* This, float* pVal);
    HRESULT (*put_AspectRatio)(IQX3DTransform* This, float newVal);
};

/* The overlay has the members of IDXEffect and nothing of its own. */
QX_INTERFACE(IQXOverlay);
struct IQXOverlayVtbl {
    QX_IDXEFFECT_METHODS(IQXOverlay);
};

QX_INTERFACE(IQXCropTransform);
struct IQXCropTransformVtbl {
    QX_IUNKNOWN_METHODS(IQXCropTransform);
    HRESULT (*PutSize)(IQXCropTransform* This, LONG nWidth, LONG nHeight);
    HRESULT (*SetAntiFlickeringLevel)(IQXCropTransform* This, int16_t Level);
    HRESULT (*PutAspectRatio)(IQXCropTransform* This, float fAspectRatio);
    HRESULT (*PutOutputSize)(IQXCropTransform* This, LONG nOutWidth, LONG nOutHeight);
};

QX_INTERFACE(IQXSceneDetect);
struct IQXSceneDetectVtbl {
    QX_IUNKNOWN_METHODS(IQXSceneDetect);
    HRESULT (*Reset)(IQXSceneDetect* This);
    /* The cut times, units of 100 ns, in a block the caller frees with free(). */
    HRESULT (*GetScenes)(IQXSceneDetect* This, int64_t** Scenes, LONG* Count);
};

QX_INTERFACE(IFlashAnimation);
struct IFlashAnimationVtbl {
    QX_IUNKNOWN_METHODS(IFlashAnimation);
    HRESULT (*GetFrame)(IFlashAnimation* This, BSTR path, LONG nWidth, LONG nHeight, BYTE* pFrame);
};

/* The module's exported entry points, as a host finds them with dlsym. */
typedef HRESULT (*LPFNDLLGETCLASSOBJECT)(const CLSID* rclsid, const IID* riid, void** ppv);
typedef HRESULT (*LPFNDLLCANUNLOADNOW)(void);
typedef HRESULT (*LPFNDLLREGISTERSERVER)(void);
typedef HRESULT (*LPFNDLLUNREGISTERSERVER)(void);

#ifdef __cplusplus
}
#endif

#endif /* QXDYNAMICEFFECTS_H */
