#include "wrap3d/4DTransform.h"

#include "qx4d/core/device/GraphicsDevice.h"
#include "wrap3d/Base3D.h"
#include "wrap3d/Context.h"

#include <algorithm>
#include <mutex>

namespace qx {

C4DTransform::C4DTransform() { EnsureContext(); }

C4DTransform::~C4DTransform()
{
    UnderBridgeLock([&] { player.reset(); });
}

void C4DTransform::GetDefaults(LONG*, LONG* nParams)
{
    if (nParams) *nParams = 0;
}

void C4DTransform::Process()
{
    UnderBridgeLock([&] { Draw(); });
}

void C4DTransform::ProcessFrame(uint32_t* pixels, float newProgress)
{
    frame = pixels;
    firstImage = nullptr;
    secondImage = nullptr;
    progress = newProgress;
    Process();
}

void C4DTransform::ProcessTransition(uint32_t* first, uint32_t* second, uint32_t* out, float newProgress)
{
    firstImage = first;
    secondImage = second;
    frame = out;
    progress = newProgress;
    Process();
}

void C4DTransform::Draw()
{
    if (gpu::Device* device = qx4d::CurrentDevice())
        device->Clear(gpu::D3DCLEAR_TARGET | gpu::D3DCLEAR_ZBUFFER, 0xFF0000FFu, 1.0f, 0);
}

LONG C4DTransform::InitPlayer(std::unique_ptr<wrap3d::Base3D> newPlayer, std::u16string_view scenePath)
{
    LONG result = 0;
    UnderBridgeLock([&] {
        player = std::move(newPlayer);
        if (!player || !player->Load(qx4d::String(scenePath))) return;
        player->Resize(width, height);  // its result is not looked at
        result = 1;
    });
    return result;
}

void C4DTransform::SetPath(std::u16string_view text) { path = text.substr(0, kMaxPath - 1); }

void C4DTransform::SetParams(const LONG* values, LONG count)
{
    paramCount = std::clamp<LONG>(count, 0, LONG(params.size()));
    if (values) std::copy_n(values, paramCount, params.begin());
}

void C4DTransform::SetSize(LONG frameWidth, LONG frameHeight)
{
    width = frameWidth;
    height = frameHeight;
}

void C4DTransform::GetSize(LONG* frameWidth, LONG* frameHeight) const
{
    if (frameWidth) *frameWidth = width;
    if (frameHeight) *frameHeight = height;
}

}  // namespace qx
