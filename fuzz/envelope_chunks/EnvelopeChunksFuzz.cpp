// The body of an envelope chunk of an object file: sub-chunks with names, behaviours,
// keys and oscillators, of any size.
#include "fuzz/envelope_common/EnvelopeProbe.h"
#include "qx4d/content/Chunk.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    qx4d::Chunk chunk(qx4d::ChunkId("ENVL"), data, size);
    qx4d::Envelope envelope;
    envelope.LoadChunks(chunk);
    qx4d::fuzz::ProbeEnvelope(envelope);
    return 0;
}
