#include "HostObjects.h"

static HRESULT SurfaceQueryInterface(IDXRawSurface* This, const IID* riid, void** ppv)
{
    if (!ppv) return E_POINTER;
    *ppv = NULL;
    if (!QxIsEqualGUID(riid, &IID_IUnknown) && !QxIsEqualGUID(riid, &IID_IDXRawSurface)) return E_NOINTERFACE;
    *ppv = This;
    This->lpVtbl->AddRef(This);
    return S_OK;
}

static ULONG SurfaceAddRef(IDXRawSurface* This) { return ++((HostSurface*)This)->references; }

static ULONG SurfaceRelease(IDXRawSurface* This)
{
    HostSurface* surface = (HostSurface*)This;
    const ULONG left = --surface->references;
    if (left == 0) {
        free(surface->samples);
        free(surface);
    }
    return left;
}

static HRESULT SurfaceGetSurfaceInfo(IDXRawSurface* This, DXRAWSURFACEINFO* info)
{
    const HostSurface* surface = (const HostSurface*)This;
    if (!info) return E_POINTER;
    info->pSamples = surface->samples;
    info->width = surface->width;
    info->height = surface->height;
    return S_OK;
}

static const IDXRawSurfaceVtbl kSurfaceVtbl = {SurfaceQueryInterface, SurfaceAddRef, SurfaceRelease,
                                               SurfaceGetSurfaceInfo};

HostSurface* HostSurfaceCreate(LONG width, LONG height, uint32_t fill)
{
    HostSurface* surface = (HostSurface*)calloc(1, sizeof(HostSurface));
    if (!surface) return NULL;
    surface->samples = (uint32_t*)malloc((size_t)width * (size_t)height * sizeof(uint32_t));
    if (!surface->samples) {
        free(surface);
        return NULL;
    }
    for (size_t i = 0; i < (size_t)width * (size_t)height; ++i) surface->samples[i] = fill;
    surface->iface.lpVtbl = &kSurfaceVtbl;
    surface->references = 1;
    surface->width = width;
    surface->height = height;
    return surface;
}

void HostSurfaceRelease(HostSurface* surface) { surface->iface.lpVtbl->Release(&surface->iface); }

/* The outer object answers IUnknown itself and hands every other interface to the inner
 * object, whose interfaces in turn count on the outer object. */
static HRESULT OuterQueryInterface(IUnknown* This, const IID* riid, void** ppv)
{
    HostOuter* outer = (HostOuter*)This;
    if (!ppv) return E_POINTER;
    if (QxIsEqualGUID(riid, &IID_IUnknown)) {
        *ppv = This;
        ++outer->references;
        return S_OK;
    }
    if (!outer->inner) {
        *ppv = NULL;
        return E_NOINTERFACE;
    }
    return outer->inner->lpVtbl->QueryInterface(outer->inner, riid, ppv);
}

static ULONG OuterAddRef(IUnknown* This) { return ++((HostOuter*)This)->references; }

/* The outer object lives on the host's stack: its count only tells the test what the
 * inner object's interfaces did to it. */
static ULONG OuterRelease(IUnknown* This) { return --((HostOuter*)This)->references; }

static const IUnknownVtbl kOuterVtbl = {OuterQueryInterface, OuterAddRef, OuterRelease};

void HostOuterInit(HostOuter* outer)
{
    outer->iface.lpVtbl = &kOuterVtbl;
    outer->references = 1;
    outer->inner = NULL;
}
