#pragma once
// Tests build chunk bytes with the engine's own writer.
#include "qx4d/content/ChunkWriter.h"

namespace qx4d::test {

using ChunkBytes = qx4d::ChunkWriter;

}  // namespace qx4d::test
