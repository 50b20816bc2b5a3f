#pragma once
// The meshes of a frame wait here as draw records and are drawn sorted: opaque meshes
// near first, transparent ones far first, each by its squared distance from the camera.
#include "qx4d/core/RadixSort.h"
#include "qx4d/core/Singleton.h"
#include "qx4d/core/scene/ObjectInstance.h"

#include <cstdint>
#include <vector>

namespace qx4d {

struct ShadingCamera;

class RenderQueue : public Singleton<RenderQueue> {
public:
    /// Mode bits of a queue.
    enum Mode : uint32_t { kSorted = 0x1, kNearFirst = 0x2, kFarFirst = 0x4 };

    struct Queue {
        uint32_t mode = 0;
        std::vector<const DrawRecord*> records;
    };

    RenderQueue() = default;

    /// The 64-bit key of a record: the transparent bit at the top, then the low bits of
    /// the material id and of the two geometry handles' indices.
    static uint64_t Key(const DrawRecord& record);
    /// Appends `record` (which must live until the flush) to the queue its key chooses.
    void Add(const DrawRecord& record);
    /// Draws the records of `queue` in its order under `camera` and empties it.
    void Flush(Queue& queue, const ShadingCamera& camera);

    Queue opaque{kSorted | kNearFirst, {}};
    Queue transparent{kSorted | kFarFirst, {}};

private:
    void Draw(const DrawRecord& record, const ShadingCamera& camera, float squaredDistance);

    // Kept between frames so that a warm frame allocates nothing.
    std::vector<uint64_t> keys;
    std::vector<float> distances;
};

}  // namespace qx4d
