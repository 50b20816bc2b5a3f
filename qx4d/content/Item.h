#pragma once
// The items of an object file: nulls, meshes, bones and clones, each with its name and
// the world matrix that the object's update gives it.
#include "qx4d/core/Matrix.h"
#include "qx4d/core/String.h"

#include <cstdint>

namespace qx4d {

class Chunk;
class MeshItem;

class Item {
public:
    enum Type : int32_t { kNull = 0, kMesh = 1, kMeshClone = 2, kBone = 3 };

    Item() = default;
    virtual ~Item() = default;
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;

    /// Reads what follows the common part of the item's chunk.
    virtual bool Load(Chunk& /*chunk*/) { return true; }
    /// Reads data that comes after the item list; the object loader doesn't call it.
    virtual bool LoadRest(Chunk& /*reader*/) { return true; }
    virtual int32_t GetType() const { return kNull; }

    String name;
    Matrix3x4 matrix = kIdentity3x4;
};

/// Draws another mesh of the object with its own matrix.
class MeshCloneItem : public Item {
public:
    explicit MeshCloneItem(MeshItem* sourceMesh) : source(sourceMesh) {}
    int32_t GetType() const override { return kMeshClone; }

    MeshItem* source;
};

/// A bone deforms the mesh that stands first in the object's list.
class BoneItem : public Item {
public:
    /// Reads a 4x4 matrix of 16 floats, transposes it and keeps its first three rows.
    bool LoadRest(Chunk& reader) override;
    int32_t GetType() const override { return kBone; }

    /// The rest pose. Object files carry none, so it stays the identity unless `LoadRest`
    /// is given one.
    Matrix3x4 rest = kIdentity3x4;
    MeshItem* mesh = nullptr;
};

}  // namespace qx4d
