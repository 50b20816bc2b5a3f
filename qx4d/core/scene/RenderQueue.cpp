#include "qx4d/core/scene/RenderQueue.h"

#include "qx4d/content/MeshItem.h"
#include "qx4d/content/Object.h"
#include "qx4d/content/ShadingScene.h"
#include "qx4d/core/device/ProfileEvent.h"

#include <cmath>

namespace qx4d {

namespace {

constexpr uint64_t kTransparentBit = uint64_t(1) << 63;

/// A mesh whose material blends is drawn with the transparent meshes, far first.
bool IsTransparent(const MeshItem& mesh) { return mesh.material.alphaBlendEnable; }

std::string NarrowName(const String& name) { return std::string(name.begin(), name.end()); }

}  // namespace

uint64_t RenderQueue::Key(const DrawRecord& record)
{
    const MeshItem& mesh = *record.mesh;
    // Materials carry no id word of their own: its bits stay 0.
    uint64_t key = IsTransparent(mesh) ? kTransparentBit : 0;
    key |= uint64_t(uint8_t(mesh.vertexBuffer.Index())) << 48;
    key |= uint64_t(uint8_t(mesh.indexBuffer.Index())) << 40;
    return key;
}

void RenderQueue::Add(const DrawRecord& record)
{
    if (!record.mesh || record.matrices.empty()) return;
    (Key(record) & kTransparentBit ? transparent : opaque).records.push_back(&record);
}

void RenderQueue::Draw(const DrawRecord& record, const ShadingCamera& camera, float squaredDistance)
{
    const ProfileEvent event(0xFF000000u,
                             "RenderMesh(" + NarrowName(record.object ? record.object->name : String()) + ")");
    MeshItem& mesh = *record.mesh;
    // The first level whose distance reaches as far as the record stands, else the last.
    const float distance = std::sqrt(squaredDistance);
    size_t lod = 0;
    while (lod + 1 < mesh.lods.size() && distance > mesh.lods[lod].maxDistance) ++lod;
    mesh.Draw(lod, record.matrices, camera);
}

void RenderQueue::Flush(Queue& queue, const ShadingCamera& camera)
{
    const auto n = uint32_t(queue.records.size());
    if (n == 0) return;
    if (distances.size() < n) distances.resize(n);
    for (uint32_t i = 0; i < n; ++i) {
        const Float3 at = Translation(queue.records[i]->matrices.front());
        float d = 0.0f;
        for (int c = 0; c < 3; ++c) d += (at[c] - camera.position[c]) * (at[c] - camera.position[c]);
        distances[i] = d;
    }
    if (!(queue.mode & kSorted)) {
        for (uint32_t i = 0; i < n; ++i) Draw(*queue.records[i], camera, distances[i]);
    } else if (queue.mode & (kNearFirst | kFarFirst)) {
        RadixSort sorter(RadixSort::KindFloat);
        sorter.Sort(distances.data(), n);
        const uint32_t* ranks = sorter.GetRanks();
        for (uint32_t i = 0; i < n; ++i) {
            const uint32_t at = ranks[(queue.mode & kNearFirst) ? i : n - 1 - i];
            Draw(*queue.records[at], camera, distances[at]);
        }
    } else {
        if (keys.size() < n) keys.resize(n);
        for (uint32_t i = 0; i < n; ++i) keys[i] = Key(*queue.records[i]);
        RadixSort sorter(RadixSort::KindUInt64);
        sorter.Sort(keys.data(), n);
        for (uint32_t i = 0; i < n; ++i)
            Draw(*queue.records[sorter.GetRanks()[i]], camera, distances[sorter.GetRanks()[i]]);
    }
    queue.records.clear();
}

}  // namespace qx4d
