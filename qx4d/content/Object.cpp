#include "qx4d/content/Object.h"

#include "qx4d/content/IFFReader.h"
#include "qx4d/content/MeshItem.h"

namespace qx4d {

namespace {

constexpr uint32_t kNoParent = 0xFFFFFFFF;

/// The item an item chunk makes, before its common part. Null for an unknown id, and for
/// a clone whose source isn't a mesh already in the list.
std::unique_ptr<Item> MakeItem(Chunk& chunk, const std::vector<std::unique_ptr<Item>>& items)
{
    switch (chunk.id) {
    case ChunkId("NULL"): return std::make_unique<Item>();
    case ChunkId("MESH"): return std::make_unique<MeshItem>();
    case ChunkId("BONE"): {
        auto bone = std::make_unique<BoneItem>();
        if (!items.empty()) bone->mesh = dynamic_cast<MeshItem*>(items.front().get());
        return bone;
    }
    case ChunkId("MECL"): {
        const uint32_t source = chunk.ReadU32();
        MeshItem* mesh = source < items.size() ? dynamic_cast<MeshItem*>(items[source].get()) : nullptr;
        return mesh ? std::make_unique<MeshCloneItem>(mesh) : nullptr;
    }
    default: return nullptr;
    }
}

Float3 ReadFloat3(Chunk& chunk)
{
    Float3 out;
    for (float& value : out) value = chunk.ReadF32();
    return out;
}

}  // namespace

MeshItem* Object::DrawnMesh(Item* item)
{
    if (!item) return nullptr;
    if (item->GetType() == Item::kMesh) return static_cast<MeshItem*>(item);
    if (item->GetType() == Item::kMeshClone) return static_cast<MeshCloneItem*>(item)->source;
    return nullptr;
}

bool LoadObject(const String& name, Object& object)
{
    IFFReader reader;
    return reader.Open(u"OBJECTS:" + name) && ReadObject(reader, name, object);
}

bool ReadObject(IFFReader& reader, const String& name, Object& object)
{
    Chunk body;
    if (!reader.NextChunk(body)) return false;
    object.name = name;
    const uint32_t itemCount = body.ReadU32();
    Chunk chunk;
    // A count that promises more chunks than the body holds ends with the body.
    for (uint32_t i = 0; i < itemCount && body.NextChunk(chunk); ++i) {
        std::unique_ptr<Item> item = MakeItem(chunk, object.items);
        Object::ItemRecord record;
        const String itemName = chunk.ReadString();
        const uint32_t parent = chunk.ReadU32();
        // A parent must come earlier in the list; any other index leaves the item a root.
        record.parent = parent != kNoParent && parent < i ? int32_t(parent) : -1;
        record.position = ReadFloat3(chunk);
        record.rotation = ReadFloat3(chunk);
        record.scale = ReadFloat3(chunk);
        if (item) {
            item->name = itemName;
            if (!item->Load(chunk)) item.reset();
        }
        record.item = item.get();
        object.records.push_back(record);
        object.items.push_back(std::move(item));
    }
    object.worlds.assign(object.records.size(), kIdentity3x4);
    return true;
}

void Object::Update(float time, const Matrix3x4& placement)
{
    for (const auto& item : items)
        if (item && item->GetType() == Item::kMesh) static_cast<MeshItem*>(item.get())->UpdateEnvelopes(time);
    for (size_t i = 0; i < records.size(); ++i) {
        const ItemRecord& record = records[i];
        const Matrix3x4 local = LocalMatrix(record.position, record.rotation, record.scale);
        worlds[i] = Multiply(record.parent >= 0 ? worlds[size_t(record.parent)] : placement, local);
        Item* item = record.item;
        if (!item) continue;
        item->matrix = worlds[i];
        if (item->GetType() == Item::kBone) {
            auto* bone = static_cast<BoneItem*>(item);
            MeshItem* mesh = bone->mesh;
            if (mesh && size_t(mesh->boneCursor) < mesh->bones.size())
                mesh->bones[size_t(mesh->boneCursor++)] = Multiply(bone->rest, worlds[i]);
        } else if (item->GetType() == Item::kMesh) {
            static_cast<MeshItem*>(item)->boneCursor = 0;
        }
    }
}

}  // namespace qx4d
