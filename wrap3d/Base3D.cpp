#include "wrap3d/Base3D.h"

#include "qx4d/core/device/GraphicsDevice.h"
#include "qx4d/core/device/Renderer.h"
#include "qx4d/core/scene/Camera.h"

namespace qx::wrap3d {

namespace {

bool DeviceIsLost()
{
    gpu::Device* device = qx4d::CurrentDevice();
    if (!device) return true;
    const HRESULT level = device->TestCooperativeLevel();
    return level == gpu::D3DERR_DEVICELOST || level == gpu::D3DERR_DEVICENOTRESET;
}

}  // namespace

Base3D::~Base3D() { ReleaseImages(); }

void Base3D::ReleaseImages()
{
    if (qx4d::Renderer* renderer = qx4d::Renderer::Instance())
        for (qx4d::ResourceHandle& image : images) renderer->ReleaseTexture(image);
    images.clear();
}

bool Base3D::Load(const qx4d::String& path)
{
    if (DeviceIsLost()) return false;
    scene.Clear();
    ReleaseImages();
    return scene.Load(path);
}

bool Base3D::AddImage(const char16_t* name)
{
    qx4d::Renderer* renderer = qx4d::Renderer::Instance();
    qx4d::ResourceHandle image = renderer ? renderer->FindTexture(name) : qx4d::ResourceHandle();
    if (image.IsNull()) return false;
    images.push_back(std::move(image));
    return true;
}

bool Base3D::SetImage(size_t index, const uint32_t* pixels, int /*reserved*/)
{
    qx4d::Renderer* renderer = qx4d::Renderer::Instance();
    if (DeviceIsLost() || !renderer || index >= images.size()) return false;
    std::lock_guard textures(renderer->TextureLock());
    qx4d::Texture* texture = renderer->GetTexture(images[index]);
    // The frame has the target's size; a texture that Resize could not fit to it would
    // read past the frame.
    if (!texture || !pixels || texture->info.Width != uint32_t(target.width) ||
        texture->info.Height != uint32_t(target.height))
        return false;
    return texture->Upload(reinterpret_cast<const uint8_t*>(pixels), texture->info.Width * 4);
}

bool Base3D::Resize(int32_t width, int32_t height)
{
    qx4d::Renderer* renderer = qx4d::Renderer::Instance();
    if (!renderer || width <= 0 || height <= 0) return false;
    bool failed = false;
    {
        std::lock_guard textures(renderer->TextureLock());
        for (const qx4d::ResourceHandle& image : images) {
            qx4d::Texture* texture = renderer->GetTexture(image);
            if (!texture) return false;
            const bool fits = (texture->usage & gpu::D3DUSAGE_DYNAMIC) && texture->info.Width == uint32_t(width) &&
                              texture->info.Height == uint32_t(height);
            // After the first failure the others are only given up, not made again.
            if (!fits && !failed)
                failed = !texture->MakeDynamic(uint32_t(width), uint32_t(height));
            else if (!fits)
                texture->ReleaseDevice();
        }
    }
    // The scene's image filters are made for the frame's size, which no window tells them.
    scene.SetFrameSize(width, height);
    // The target's width stands against both sizes: the height isn't looked at.
    if (target.width == width && target.width == height) return !failed;
    return !failed && target.Create(width, height);
}

bool Base3D::Render(float time, float step, uint32_t* out)
{
    qx4d::GraphicsDevice* device = qx4d::GraphicsDevice::Current();
    if (!device || !device->BeginFrame()) return false;
    device->Flush();
    const bool begun = target.Begin();
    device->Flush();
    if (!scene.cameras.empty()) scene.cameras.front()->MakeActive();
    scene.MakeCurrent();
    scene.Update(scene.startTime + time, step);
    scene.Render();
    device->Flush();
    if (begun) target.End(out);
    device->Flush();
    device->EndFrame(false);
    return begun;
}

bool Effect3D::Load(const qx4d::String& path) { return Base3D::Load(path) && AddImage(u"cartes\\sample 1.dds"); }

bool Effect3D::Render(float time, float step, uint32_t* out) { return Base3D::Render(time * SceneLength(), step, out); }

bool ParticleSystem3D::Load(const qx4d::String& path)
{
    return Base3D::Load(path) && AddImage(u"cartes\\sample 2.dds");
}

bool Transition3D::Load(const qx4d::String& path)
{
    return Base3D::Load(path) && AddImage(u"cartes\\sample 3.dds") && AddImage(u"cartes\\sample 4.dds");
}

bool Transition3D::Render(float time, float step, uint32_t* out)
{
    return Base3D::Render(time * SceneLength(), step, out);
}

bool Compo3D::Load(const qx4d::String& path)
{
    // The first picture is needed; the others join when the composition has them.
    if (!Base3D::Load(path) || !AddImage(u"cartes\\carte 1.dds")) return false;
    for (const char16_t* name : {u"cartes\\carte 2.dds", u"cartes\\carte 3.dds", u"cartes\\carte 4.dds"})
        AddImage(name);
    return true;
}

bool Compo3D::Render(float time, float step, uint32_t* out) { return Base3D::Render(time * SceneLength(), step, out); }

}  // namespace qx::wrap3d
