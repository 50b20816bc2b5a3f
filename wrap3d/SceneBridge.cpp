#include "wrap3d/SceneBridge.h"

#include "qx4d/core/TextReader.h"
#include "qx4d/core/scene/Scene.h"
#include "wrap3d/4DAnim.h"
#include "wrap3d/4DEffect.h"
#include "wrap3d/4DRotate.h"
#include "wrap3d/Context.h"
#include "wrap3d/SceneEffects.h"

#include <new>

namespace qx {

namespace {

template <typename Client>
std::unique_ptr<C4DTransform> Make()
{
    return std::unique_ptr<C4DTransform>(new (std::nothrow) Client());
}

std::unique_ptr<C4DTransform> MakeClient(LONG id)
{
    switch (id) {
    case effect_id::kCube: return Make<C4DCube>();
    case effect_id::kMove3D: return Make<C4DRotate>();
    case effect_id::kParticles3D: return Make<C4DParticles>();
    case effect_id::kScene3D:
    case effect_id::kAnimation3D: return Make<C4DEffect>();
    case effect_id::kTransition3D: return Make<C4DTransition>();
    case effect_id::kComposition3D: return Make<C4DAnim>();
    default: return nullptr;  // 5001 too
    }
}

}  // namespace

std::unique_ptr<C4DTransform> CreateClient(LONG id, LONG width, LONG height)
{
    if (!EnsureContext()) return nullptr;
    std::unique_ptr<C4DTransform> client = MakeClient(id);
    if (client) client->SetSize(width, height);
    return client;
}

float GetSceneDuration(std::u16string_view path)
{
    const C4DTransform probe;  // making a client is what starts the context
    if (!IsContextReady()) return 1.0f;
    std::lock_guard guard(C4DContext::Instance()->Lock());
    return qx4d::GetDuration(qx4d::String(path));
}

LONG GetSceneImagesCount(std::u16string_view path)
{
    qx4d::TextReader reader;
    if (!reader.Open(u"SCENES:" + std::u16string(path))) return 0;
    qx4d::String key;
    while (reader.NextToken(key, true)) {
        if (key == u"Composition") return reader.NextToken(true) ? reader.ToInt() : 0;
        reader.SkipLine();
    }
    return -1;
}

}  // namespace qx
