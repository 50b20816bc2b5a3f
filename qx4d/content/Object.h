#pragma once
// A loaded object file: the flat list of its items (nulls, meshes, bones, clones) with the
// local placement of each and the index of its parent, which always comes earlier.
#include "qx4d/content/Item.h"
#include "qx4d/core/Matrix.h"
#include "qx4d/core/String.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qx4d {

class IFFReader;
class MeshItem;

class Object {
public:
    /// The local placement of one item and where it hangs.
    struct ItemRecord {
        Float3 position{};
        Float3 rotation{};
        Float3 scale{1.0f, 1.0f, 1.0f};
        /// The item of the slot; null when its chunk made none.
        Item* item = nullptr;
        /// Index of the parent record; -1 for none.
        int32_t parent = -1;
    };

    /// Evaluates the surfaces' envelopes at `time`, then gives every item its world matrix,
    /// root items placed by `placement`, and fills the bone matrices of the meshes.
    void Update(float time, const Matrix3x4& placement = kIdentity3x4);

    /// The mesh that an item draws: a mesh itself, or the source of a clone; else null.
    static MeshItem* DrawnMesh(Item* item);

    String name;
    std::vector<ItemRecord> records;
    /// One slot a record; empty where the chunk made no item.
    std::vector<std::unique_ptr<Item>> items;
    /// The world matrices of the last update, one a record, kept for slots without an item.
    std::vector<Matrix3x4> worlds;
};

/// Reads "OBJECTS:" + `name` into `object`. False when the file can't be opened or holds no
/// chunk. Items whose data can't be trusted are dropped, and their slots stay empty.
bool LoadObject(const String& name, Object& object);
/// Reads the item list of a file already in `reader`; false when it holds no chunk.
bool ReadObject(IFFReader& reader, const String& name, Object& object);

}  // namespace qx4d
