#include "qx4d/content/Item.h"

#include "qx4d/content/Chunk.h"

namespace qx4d {

bool BoneItem::LoadRest(Chunk& reader)
{
    float stored[16];
    for (float& value : stored) value = reader.ReadF32();
    // The file's matrix is for row vectors: its transpose applies to column vectors.
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 4; ++c) rest[size_t(r * 4 + c)] = stored[c * 4 + r];
    return true;
}

}  // namespace qx4d
