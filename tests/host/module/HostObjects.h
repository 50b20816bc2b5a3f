/* Objects a C host makes for the module: frame surfaces over its own memory, and an
 * outer object that aggregates one of the module's objects. */
#ifndef QX_TEST_HOST_OBJECTS_H
#define QX_TEST_HOST_OBJECTS_H

#include <qxdynamiceffects/QXDynamicEffects.h>

typedef struct HostSurface {
    IDXRawSurface iface;
    ULONG references;
    uint32_t* samples;
    LONG width;
    LONG height;
} HostSurface;

/* A surface of width * height samples, all `fill`, with one reference; NULL without memory. */
HostSurface* HostSurfaceCreate(LONG width, LONG height, uint32_t fill);
void HostSurfaceRelease(HostSurface* surface);

typedef struct HostOuter {
    IUnknown iface;
    ULONG references;
    IUnknown* inner; /* the aggregated object's own IUnknown, owned */
} HostOuter;

void HostOuterInit(HostOuter* outer);

#endif
