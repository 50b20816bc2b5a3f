#include "qx4d/content/ReadFloatOrEnvelope.h"

#include "qx4d/core/TextReader.h"

namespace qx4d {

void ReadFloatOrEnvelope(TextReader& reader, float& field, std::vector<std::unique_ptr<Envelope>>& ownerEnvelopes)
{
    const TextReader::Position start = reader.SaveCursor();
    String token;
    const bool found = reader.NextToken(token, true);
    reader.RestoreCursor(start);
    if (!found) {
        return;
    }
    if (token == u"{") {
        // The envelope reads the block from its "{" on; one whose read fails is dropped,
        // leaving the field at its value.
        auto envelope = std::make_unique<Envelope>(&field);
        if (envelope->Load(reader)) {
            ownerEnvelopes.push_back(std::move(envelope));
        }
        return;
    }
    field = ReadFloat(reader);
}

}  // namespace qx4d
