#pragma once
// A scene player: one loaded scene, the live textures that stand for input frames, and the
// off-screen target that a time and the inputs become one read-back frame through.
#include "qx4d/core/device/ResourceHandle.h"
#include "qx4d/core/scene/Scene.h"
#include "wrap3d/OffscreenTarget.h"

#include <cstdint>
#include <vector>

namespace qx::wrap3d {

class Base3D {
public:
    Base3D() = default;
    virtual ~Base3D();
    Base3D(const Base3D&) = delete;
    Base3D& operator=(const Base3D&) = delete;

    /// Loads "SCENES:" + `path`; refused while the device is lost. The players then look
    /// up the placeholder textures that their live frames replace.
    virtual bool Load(const qx4d::String& path);
    /// Uploads `pixels` (rows of the texture's width x 4 bytes, top-down) into live image
    /// `index`; false on a lost device or when the image isn't there.
    virtual bool SetImage(size_t index, const uint32_t* pixels, int reserved);
    /// Draws the scene at its start time plus `time` into `out`; false when nothing was
    /// written.
    virtual bool Render(float time, float step, uint32_t* out);
    /// Makes the live images dynamic textures of this size and the target too, and the
    /// scene's filter chain. As the target's width is compared with both sizes, a square
    /// size equal to that width keeps the target as it is.
    bool Resize(int32_t width, int32_t height);

    qx4d::Scene scene;
    OffscreenTarget target;
    std::vector<qx4d::ResourceHandle> images;

protected:
    /// Appends the scene's texture of that name; false when the scene has none.
    bool AddImage(const char16_t* name);
    /// The scene's length, for players that take a progress from 0 to 1.
    float SceneLength() const { return scene.endTime - scene.startTime; }

private:
    void ReleaseImages();
};

/// Plays an effect scene on one live frame; time is a progress over the scene's length.
class Effect3D : public Base3D {
public:
    bool Load(const qx4d::String& path) override;
    bool Render(float time, float step, uint32_t* out) override;
};

/// Plays a particle scene over one live frame; time is in seconds.
class ParticleSystem3D : public Base3D {
public:
    bool Load(const qx4d::String& path) override;
};

/// Plays a transition scene between two live frames; time is a progress.
class Transition3D : public Base3D {
public:
    bool Load(const qx4d::String& path) override;
    bool Render(float time, float step, uint32_t* out) override;
};

/// Plays a composition with up to four user pictures; time is a progress.
class Compo3D : public Base3D {
public:
    bool Load(const qx4d::String& path) override;
    bool Render(float time, float step, uint32_t* out) override;
};

}  // namespace qx::wrap3d
