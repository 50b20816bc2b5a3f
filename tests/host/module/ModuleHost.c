/* A host written in C that drives the installed module as an editor does: it registers
 * the server, creates every class by CLSID and by ProgID through the registry, runs the
 * effect host through Setup and Execute of a frame with the vtable calls an editor makes,
 * tries the class factories' edge cases, and unregisters.
 *
 *   qx_module_host SERVER.so [DATA_PATH]
 *
 * With a data path it also plays a scene effect, so the process ends with the scene
 * context running; the module takes it down at exit. Exit status 0 when every check holds. */
#define _DEFAULT_SOURCE
#include "HostObjects.h"

#include <qxdynamiceffects/QXCom.h>

#include <dlfcn.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

static int failures = 0;

#define CHECK(condition)                                                                                               \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                                            \
            ++failures;                                                                                                \
        }                                                                                                              \
    } while (0)

#define CHECK_HR(expected, call)                                                                                       \
    do {                                                                                                               \
        const HRESULT got_ = (call);                                                                                   \
        if (got_ != (expected)) {                                                                                      \
            fprintf(stderr, "%s:%d: %s gave 0x%08X, not 0x%08X\n", __FILE__, __LINE__, #call, (unsigned)got_,          \
                    (unsigned)(expected));                                                                             \
            ++failures;                                                                                                \
        }                                                                                                              \
    } while (0)

typedef struct Module {
    void* handle;
    LPFNDLLGETCLASSOBJECT getClassObject;
    LPFNDLLCANUNLOADNOW canUnloadNow;
    LPFNDLLREGISTERSERVER registerServer;
    LPFNDLLUNREGISTERSERVER unregisterServer;
} Module;

typedef struct ListedClass {
    const char* progId;
    const char* versionIndependentProgId;
    const CLSID* clsid;
    const IID* iid;
} ListedClass;

static const ListedClass kListed[] = {
    {"QXDynamicEffects.QXDynamicEffect.5", "QXDynamicEffects.QXDynamicEffect", &CLSID_QXDynamicEffect,
     &IID_IQXDynamicEffect},
    {"QXDynamicEffects.QXCropTransform.4", "QXDynamicEffects.QXCropTransform", &CLSID_QXCropTransform,
     &IID_IQXCropTransform},
    {"QXDynamicEffects.QX3DTransform.3", "QXDynamicEffects.QX3DTransform", &CLSID_QX3DTransform, &IID_IQX3DTransform},
    {"QXDynamicEffects.QXCompositor.2", "QXDynamicEffects.QXCompositor", &CLSID_QXCompositor, &IID_IQXCompositor},
    {"QXDynamicEffects.QXOverlay.2", "QXDynamicEffects.QXOverlay", &CLSID_QXOverlay, &IID_IQXOverlay},
    {"QXDynamicEffects.QXSceneDetect.1", "QXDynamicEffects.QXSceneDetect", &CLSID_QXSceneDetect, &IID_IQXSceneDetect},
    {"QXDynamicEffects.FlashAnimation.1", "QXDynamicEffects.FlashAnimation", &CLSID_FlashAnimation,
     &IID_IFlashAnimation},
};
#define LISTED_COUNT (sizeof kListed / sizeof kListed[0])

static char registryPath[512];

/* dlsym's address into a function pointer, which ISO C cannot convert to directly. */
static void entryPoint(void* handle, const char* name, void* function, size_t size)
{
    void* address = dlsym(handle, name);
    memcpy(function, &address, size);
}

static void loadModule(const char* server, Module* module)
{
    /* As a registration tool does: the server by its path, before anything is registered. */
    void* handle = dlopen(server, RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        fprintf(stderr, "cannot load %s: %s\n", server, dlerror());
        exit(1);
    }
    module->handle = handle;
    entryPoint(handle, "DllGetClassObject", &module->getClassObject, sizeof module->getClassObject);
    entryPoint(handle, "DllCanUnloadNow", &module->canUnloadNow, sizeof module->canUnloadNow);
    entryPoint(handle, "DllRegisterServer", &module->registerServer, sizeof module->registerServer);
    entryPoint(handle, "DllUnregisterServer", &module->unregisterServer, sizeof module->unregisterServer);
    if (!module->getClassObject || !module->canUnloadNow || !module->registerServer || !module->unregisterServer) {
        fprintf(stderr, "%s lacks an entry point\n", server);
        exit(1);
    }
}

/* Every listed class, by CLSID and by both ProgIDs, answering its own interface. */
static void createEveryClass(void)
{
    for (size_t i = 0; i < LISTED_COUNT; ++i) {
        CLSID byProgId, byIndependent;
        CHECK_HR(S_OK, QxCLSIDFromProgID(kListed[i].progId, &byProgId));
        CHECK_HR(S_OK, QxCLSIDFromProgID(kListed[i].versionIndependentProgId, &byIndependent));
        CHECK(QxIsEqualGUID(&byProgId, kListed[i].clsid));
        CHECK(QxIsEqualGUID(&byIndependent, kListed[i].clsid));
        const CLSID* ways[] = {kListed[i].clsid, &byProgId};
        for (size_t w = 0; w < 2; ++w) {
            IUnknown* object = NULL;
            CHECK_HR(S_OK, QxCoCreateInstance(ways[w], NULL, 0, kListed[i].iid, (void**)&object));
            CHECK(object != NULL);
            if (object) object->lpVtbl->Release(object);
        }
    }
    /* The source of the template table is registered by CLSID only, as filters are. */
    IUnknown* source = NULL;
    CHECK_HR(S_OK, QxCoCreateInstance(&CLSID_Anim3DVideoSource, NULL, 0, &IID_IAnim3DVideoSource, (void**)&source));
    CHECK(source != NULL);
    if (source) source->lpVtbl->Release(source);
    CLSID unknown;
    CHECK_HR(CO_E_CLASSSTRING, QxCLSIDFromProgID("QXDynamicEffects.Nothing.1", &unknown));
}

/* Fade out to red (COLORREF 0x0000FF): the input itself at progress 0, all red at 1. */
static void driveEffectHost(void)
{
    enum { kWidth = 64, kHeight = 36 };
    const uint32_t grey = 0xFF808080u, red = 0x00FF0000u;
    IQXDynamicEffect* effect = NULL;
    CHECK_HR(S_OK, QxCoCreateInstance(&CLSID_QXDynamicEffect, NULL, 0, &IID_IQXDynamicEffect, (void**)&effect));
    if (!effect) return;
    LONG count = 0;
    CHECK_HR(S_OK, effect->lpVtbl->GetEffectsCount(effect, &count));
    CHECK(count > 0);
    BSTR name = NULL;
    CHECK_HR(S_OK, effect->lpVtbl->GetEffectString(effect, 0, &name));
    CHECK(QxSysStringLen(name) > 0);
    QxSysFreeString(name);

    CHECK_HR(S_OK, effect->lpVtbl->put_Index(effect, 8));
    BSTR params = QxSysAllocString(u"255;");
    CHECK_HR(S_OK, effect->lpVtbl->put_Params(effect, params));
    QxSysFreeString(params);
    BSTR back = NULL;
    CHECK_HR(S_OK, effect->lpVtbl->get_Params(effect, &back));
    CHECK(QxSysStringLen(back) == 4 && back[0] == u'2' && back[3] == u';');
    QxSysFreeString(back);

    HostSurface* input = HostSurfaceCreate(kWidth, kHeight, grey);
    HostSurface* output = HostSurfaceCreate(kWidth, kHeight, 0);
    IDXTransform* transform = NULL;
    CHECK_HR(S_OK, effect->lpVtbl->QueryInterface(effect, &IID_IDXTransform, (void**)&transform));
    if (input && output && transform) {
        IUnknown* inputs[] = {(IUnknown*)&input->iface};
        IUnknown* outputs[] = {(IUnknown*)&output->iface};
        CHECK_HR(DXTERR_UNINITIALIZED, transform->lpVtbl->Execute(transform, NULL, NULL, NULL));
        CHECK_HR(E_INVALIDARG, transform->lpVtbl->Setup(transform, inputs, 1, outputs, 2, 0));
        CHECK_HR(S_OK, transform->lpVtbl->Setup(transform, inputs, 1, outputs, 1, 0));
        CHECK(input->references == 2 && output->references == 2);

        CHECK_HR(S_OK, effect->lpVtbl->put_Progress(effect, 0.0f));
        CHECK_HR(S_OK, transform->lpVtbl->Execute(transform, NULL, NULL, NULL));
        CHECK(output->samples[0] == grey && output->samples[kWidth * kHeight - 1] == grey);

        CHECK_HR(S_OK, effect->lpVtbl->put_Progress(effect, 1.0f));
        CHECK_HR(S_OK, transform->lpVtbl->Execute(transform, NULL, NULL, NULL));
        int allRed = 1;
        for (size_t i = 0; i < (size_t)kWidth * kHeight; ++i) allRed &= (output->samples[i] & 0x00FFFFFFu) == red;
        CHECK(allRed);

        /* Undoing the set-up gives the host's surfaces back. */
        CHECK_HR(S_OK, transform->lpVtbl->Setup(transform, NULL, 0, NULL, 0, 0));
        CHECK(input->references == 1 && output->references == 1);
    }
    if (transform) transform->lpVtbl->Release(transform);
    effect->lpVtbl->Release(effect);
    if (input) HostSurfaceRelease(input);
    if (output) HostSurfaceRelease(output);
}

static void classFactoryEdges(const Module* module)
{
    void* out = &out;
    for (size_t i = 0; i < LISTED_COUNT; ++i) {
        out = &out;
        CHECK_HR(E_NOINTERFACE, module->getClassObject(kListed[i].clsid, &IID_IDXEffect, &out));
        CHECK(out == NULL);
    }
    /* A class the module does not serve. */
    static const CLSID noSuchClass = {0x5A1E0C1D, 0x0B1E, 0x4C7A, {0x9E, 0x21, 0x3D, 0x5F, 0x70, 0x11, 0x22, 0x33}};
    CHECK_HR(CLASS_E_CLASSNOTAVAILABLE, module->getClassObject(&noSuchClass, &IID_IClassFactory, &out));
    CHECK(out == NULL);
    CHECK_HR(E_POINTER, module->getClassObject(&CLSID_QXDynamicEffect, &IID_IClassFactory, NULL));

    IClassFactory* factory = NULL;
    CHECK_HR(S_OK, module->getClassObject(&CLSID_QXDynamicEffect, &IID_IClassFactory, (void**)&factory));
    if (!factory) return;
    IUnknown* same = NULL;
    CHECK_HR(E_NOINTERFACE, factory->lpVtbl->QueryInterface(factory, &IID_IDXEffect, (void**)&same));
    CHECK(same == NULL);
    CHECK_HR(E_POINTER, factory->lpVtbl->CreateInstance(factory, NULL, &IID_IUnknown, NULL));
    CHECK_HR(S_OK, factory->lpVtbl->LockServer(factory, true));
    CHECK_HR(S_OK, factory->lpVtbl->LockServer(factory, false));

    /* Aggregation: only the inner IUnknown may be asked for. */
    HostOuter outer;
    HostOuterInit(&outer);
    out = &out;
    CHECK_HR(E_NOINTERFACE, factory->lpVtbl->CreateInstance(factory, &outer.iface, &IID_IQXDynamicEffect, &out));
    CHECK(out == NULL);
    CHECK_HR(S_OK, factory->lpVtbl->CreateInstance(factory, &outer.iface, &IID_IUnknown, (void**)&outer.inner));
    CHECK(outer.inner != NULL && outer.references == 1);
    if (outer.inner) {
        IQXDynamicEffect* effect = NULL;
        CHECK_HR(S_OK, outer.iface.lpVtbl->QueryInterface(&outer.iface, &IID_IQXDynamicEffect, (void**)&effect));
        CHECK(outer.references == 2); /* the inner object's interface counts on the outer one */
        if (effect) {
            IUnknown* identity = NULL;
            CHECK_HR(S_OK, effect->lpVtbl->QueryInterface(effect, &IID_IUnknown, (void**)&identity));
            CHECK(identity == &outer.iface);
            if (identity) identity->lpVtbl->Release(identity);
            LONG count = 0;
            CHECK_HR(S_OK, effect->lpVtbl->GetEffectsCount(effect, &count));
            effect->lpVtbl->Release(effect);
        }
        CHECK(outer.references == 1);
        CHECK(outer.inner->lpVtbl->Release(outer.inner) == 0);
    }
    factory->lpVtbl->Release(factory);
    CHECK_HR(S_FALSE, module->canUnloadNow());
}

static int readFile(const char* path, char* buffer, size_t size)
{
    FILE* file = fopen(path, "rb");
    if (!file) return -1;
    const size_t read = fread(buffer, 1, size - 1, file);
    fclose(file);
    buffer[read] = 0;
    return (int)read;
}

static void writeFile(const char* path, const char* text)
{
    FILE* file = fopen(path, "wb");
    if (!file) return;
    fputs(text, file);
    fclose(file);
}

/* A corrupt registry is refused by registration and by the loader, and left as it was; a
 * registry that cannot be written is refused too. */
static void registryFaults(const Module* module, const char* home)
{
    static char saved[1 << 16], after[1 << 16];
    CHECK(readFile(registryPath, saved, sizeof saved) > 0);
    const char* corrupt = "QXCOM Registry 1\n[CLSID\\{broken\n";
    writeFile(registryPath, corrupt);
    CHECK_HR(REGDB_E_INVALIDVALUE, module->registerServer());
    CHECK_HR(REGDB_E_INVALIDVALUE, module->unregisterServer());
    IUnknown* object = NULL;
    CHECK_HR(REGDB_E_INVALIDVALUE, QxCoCreateInstance(&CLSID_QXDynamicEffect, NULL, 0, &IID_IUnknown, (void**)&object));
    CHECK(readFile(registryPath, after, sizeof after) > 0 && strcmp(after, corrupt) == 0);
    writeFile(registryPath, saved);

    /* A data folder that is a file: the registry's folder cannot be made. */
    char blocked[512];
    snprintf(blocked, sizeof blocked, "%s/blocked", home);
    writeFile(blocked, "");
    setenv("XDG_DATA_HOME", blocked, 1);
    CHECK_HR(REGDB_E_WRITEREGDB, module->registerServer());
    setenv("XDG_DATA_HOME", home, 1);
    unlink(blocked);
}

static void unregister(const Module* module)
{
    CHECK_HR(S_OK, module->unregisterServer());
    IUnknown* object = NULL;
    CHECK_HR(REGDB_E_CLASSNOTREG, QxCoCreateInstance(&CLSID_QXDynamicEffect, NULL, 0, &IID_IUnknown, (void**)&object));
    CLSID clsid;
    CHECK_HR(CO_E_CLASSSTRING, QxCLSIDFromProgID("QXDynamicEffects.QXDynamicEffect", &clsid));
    /* Nothing of the module is left in the registry. */
    static char text[1 << 16];
    CHECK(readFile(registryPath, text, sizeof text) > 0 && strstr(text, "QXDynamicEffects") == NULL);
    unlink(registryPath);
    CHECK_HR(QX_E_FILE_NOT_FOUND, module->unregisterServer());
}

/* The effect's default parameter list as its text, "%ld;" for each value. */
static BSTR defaultParams(IQXDynamicEffect* effect, LONG id)
{
    LONG index = 0, values[16] = {0}, count = 0;
    OLECHAR text[16 * 12 + 1];
    size_t length = 0;
    effect->lpVtbl->GetIndexFromID(effect, id, &index);
    effect->lpVtbl->GetEffectDefaults(effect, index, values, &count);
    for (LONG i = 0; i < count && i < 16; ++i) {
        char digits[16];
        snprintf(digits, sizeof digits, "%ld;", (long)values[i]);
        for (const char* c = digits; *c; ++c) text[length++] = (OLECHAR)*c;
    }
    text[length] = 0;
    return QxSysAllocString(text);
}

/* The cube (5000) at its start over a grey frame: the frame fills the middle of the
 * picture, and the dark backdrop shows at the sides. Its scene context runs on as the
 * process ends. */
static void playSceneEffect(const char* dataPath)
{
    enum { kWidth = 160, kHeight = 120 };
    const uint32_t grey = 0xFF808080u;
    OLECHAR wide[512];
    size_t length = 0;
    for (; dataPath[length] && length + 1 < sizeof wide / sizeof wide[0]; ++length) {
        wide[length] = (OLECHAR)(unsigned char)dataPath[length]; /* an ASCII path */
    }
    wide[length] = 0;
    IQXDynamicEffect* effect = NULL;
    CHECK_HR(S_OK, QxCoCreateInstance(&CLSID_QXDynamicEffect, NULL, 0, &IID_IQXDynamicEffect, (void**)&effect));
    if (!effect) return;
    BSTR path = QxSysAllocString(wide);
    CHECK_HR(S_OK, effect->lpVtbl->SetGlobalDataPath(effect, path));
    QxSysFreeString(path);
    CHECK_HR(S_OK, effect->lpVtbl->put_Index(effect, 5000));
    BSTR params = defaultParams(effect, 5000);
    CHECK_HR(S_OK, effect->lpVtbl->put_Params(effect, params));
    QxSysFreeString(params);
    HostSurface* input = HostSurfaceCreate(kWidth, kHeight, grey);
    HostSurface* output = HostSurfaceCreate(kWidth, kHeight, 0);
    IDXTransform* transform = NULL;
    effect->lpVtbl->QueryInterface(effect, &IID_IDXTransform, (void**)&transform);
    if (input && output && transform) {
        IUnknown* inputs[] = {(IUnknown*)&input->iface};
        IUnknown* outputs[] = {(IUnknown*)&output->iface};
        CHECK_HR(S_OK, transform->lpVtbl->Setup(transform, inputs, 1, outputs, 1, 0));
        CHECK_HR(S_OK, effect->lpVtbl->put_Progress(effect, 0.0f));
        CHECK_HR(S_OK, transform->lpVtbl->Execute(transform, NULL, NULL, NULL));
        const uint32_t middle = output->samples[kWidth * (kHeight / 2) + kWidth / 2];
        const uint32_t side = output->samples[kWidth * (kHeight / 2) + 1];
        CHECK(((middle >> 8) & 0xFF) > 0x60);
        CHECK(((side >> 8) & 0xFF) < 0x40);
    }
    if (transform) transform->lpVtbl->Release(transform);
    effect->lpVtbl->Release(effect);
    if (input) HostSurfaceRelease(input);
    if (output) HostSurfaceRelease(output);
}

int main(int argc, char** argv)
{
    if (argc < 2) {
        fprintf(stderr, "usage: %s SERVER.so [DATA_PATH]\n", argv[0]);
        return 2;
    }
    char home[] = "/tmp/qx-module-host-XXXXXX";
    if (!mkdtemp(home)) return 2;
    setenv("XDG_DATA_HOME", home, 1);
    snprintf(registryPath, sizeof registryPath, "%s/qxcom/classes.reg", home);

    Module module;
    loadModule(argv[1], &module);
    IUnknown* object = NULL;
    CHECK_HR(REGDB_E_CLASSNOTREG, QxCoCreateInstance(&CLSID_QXDynamicEffect, NULL, 0, &IID_IUnknown, (void**)&object));
    CHECK_HR(S_OK, module.registerServer());
    struct stat info;
    CHECK(stat(registryPath, &info) == 0);

    createEveryClass();
    driveEffectHost();
    classFactoryEdges(&module);
    registryFaults(&module, home);
    if (argc > 2) playSceneEffect(argv[2]);
    unregister(&module);
    /* Unloading leaves the module in place: its entry points still answer. */
    dlclose(module.handle);
    CHECK_HR(S_FALSE, module.canUnloadNow());
    rmdir(home);
    fprintf(stderr, "%s: %d failed checks\n", argv[0], failures);
    return failures == 0 ? 0 : 1;
}
