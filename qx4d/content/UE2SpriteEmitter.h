#pragma once
// The description of one particle emitter, read from an XML file under "EMITTERS:": how
// many particles live and how fast they come, how long they live, their texture and its
// cells, movement, size, birthplace, colour, collisions, draw states, spin and revolution.
// The record does not change once read; the particle simulation runs from it.
#include "qx4d/content/Domain.h"
#include "qx4d/content/EmitterValues.h"
#include "qx4d/content/Envelope.h"
#include "qx4d/core/String.h"
#include "qx4d/core/device/ResourceHandle.h"

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <vector>

namespace qx4d {

class XmlNode;

class UE2SpriteEmitter {
public:
    /// `drawStyle` values: the blending each stands for is the simulation's.
    enum DrawStyle : int32_t {
        Regular = 0,
        AlphaBlend = 1,
        Modulated = 2,
        Translucent = 3,
        AlphaModulate = 4,
        Darken = 5,
        Brighten = 6,
    };
    /// Particles are born at world positions.
    static constexpr int32_t kWorldSpace = 2;

    // Bounds that keep a file from making the engine allocate without measure.
    static constexpr int32_t kMaxParticlesCap = 100000;
    static constexpr int32_t kMaxSubdivisionsPerAxis = 256;
    static constexpr size_t kMaxCollisionPlanes = 64;

    /// The texture cell of a particle: four (u, v) corners, top left, top right, bottom
    /// right, bottom left.
    struct Subdivision {
        std::array<float, 8> corners{};
    };

    UE2SpriteEmitter();
    /// Gives the texture back.
    ~UE2SpriteEmitter();
    UE2SpriteEmitter(const UE2SpriteEmitter&) = delete;
    UE2SpriteEmitter& operator=(const UE2SpriteEmitter&) = delete;

    /// A new record read from "EMITTERS:" + `path`, its defaults in force for whatever the
    /// file leaves out; null when the file can't be read.
    static std::unique_ptr<UE2SpriteEmitter> Load(const String& path);
    /// A new record from the elements under `root` (null: the defaults).
    static std::unique_ptr<UE2SpriteEmitter> Read(const XmlNode* root);

    /// The number of texture cells, U x V.
    size_t SubdivisionCount() const { return subdivisions.size(); }
    /// The cell at `index`, held within the table.
    const Subdivision& SubdivisionAt(int64_t index) const;

    // General
    String name;
    int32_t maxParticles = 100;
    float particlesPerSecond = 1.0f;
    bool automaticSpawning = false;
    // Time
    FloatRange lifetimeRange{4.0f, 4.0f};
    int32_t deathEmitterFirst = -1;
    int32_t deathEmitterCount = -1;
    int32_t deathEmitterAmount = 0;
    // Texture
    ResourceHandle texture;
    int32_t drawStyle = Brighten;
    int32_t uSubdivisions = 1;
    int32_t vSubdivisions = 1;
    bool useRandomSubdivisions = false;
    int32_t subdivisionStart = 0;
    int32_t subdivisionEnd = 0;
    float subdivisionScaleRepeats = 0.0f;
    Envelope subdivisionScale;
    std::vector<Subdivision> subdivisions;
    // Movement
    Float3 acceleration{};
    FloatRange3 startVelocityRange{};
    float clampVelocityMin = 0.0f;
    float clampVelocityMax = std::bit_cast<float>(0x4CBEBC20u);  // 100000000.0
    // Size
    bool uniformSize = true;
    FloatRange2 startSizeRange{FloatRange{1.0f, 1.0f}, FloatRange{1.0f, 1.0f}};
    bool useSizeScale = false;
    Envelope sizeScaleX;
    Envelope sizeScaleY;
    // Location
    int32_t addLocationEmitter = -1;
    std::unique_ptr<Domain> domain;
    // Color
    float opacity = 1.0f;
    float fadeInEndTime = 0.0f;
    float fadeOutStartTime = 1.0f;
    std::array<float, 4> fadeInFactor{1.0f, 1.0f, 1.0f, 1.0f};
    std::array<float, 4> fadeOutFactor{1.0f, 1.0f, 1.0f, 1.0f};
    bool useColorScale = false;
    float colorScaleRepeats = 0.0f;
    ColorRange colorMultiplier{};
    /// Red, green, blue, alpha.
    std::array<Envelope, 4> colorScale;
    // Collision
    FloatRange3 dampingFactorRange{FloatRange{1.0f, 1.0f}, FloatRange{1.0f, 1.0f}, FloatRange{1.0f, 1.0f}};
    Float3 extentMultiplier{1.0f, 1.0f, 1.0f};
    ByteRange maxCollisions{};
    int32_t spawnAmount = 0;
    FloatRange3 spawnedVelocityScaleRange{};
    int32_t spawnFromOtherEmitter = -1;
    bool useCollision = false;
    bool useCollisionPlanes = false;
    bool useMaxCollisions = false;
    bool useSpawnedVelocityScaleRange = false;
    std::vector<Plane> collisionPlanes;
    // Rendering
    bool alphaTest = true;
    uint8_t alphaRef = 0;
    bool zTest = true;
    bool zWrite = false;
    // Rotation
    bool spinParticles = false;
    FloatRange startSpinRange{};
    FloatRange spinsPerSecondRange{};
    float spinCCWorCW = 0.5f;
    // Revolution
    FloatRange3 revolutionCenterOffsetRange{};
    FloatRange3 revolutionsPerSecondRange{FloatRange{0.0f, 1.0f}, FloatRange{0.0f, 1.0f}, FloatRange{0.0f, 1.0f}};
    bool useRevolution = false;

    int32_t coordinateSpace = kWorldSpace;

private:
    // The element readers, in the order the file's elements are read.
    void ReadGeneral(const XmlNode& element);
    void ReadTime(const XmlNode& element);
    void ReadTexture(const XmlNode& element);
    void ReadMovement(const XmlNode& element);
    void ReadSize(const XmlNode& element);
    void ReadLocation(const XmlNode& element);
    void ReadColor(const XmlNode& element);
    void ReadCollision(const XmlNode& element);
    void ReadRendering(const XmlNode& element);
    void ReadRotation(const XmlNode& element);
    void ReadRevolution(const XmlNode& element);

    /// The cells of the texture and the default cell curve, after the "Texture" element.
    void BuildSubdivisions(bool endGiven);
    /// One key 0 for every size and colour curve the file left without keys.
    void CompleteCurves();
};

}  // namespace qx4d
