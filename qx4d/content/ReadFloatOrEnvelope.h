#pragma once
// The value of a notation key that is either a plain number or an envelope block.
#include "qx4d/content/Envelope.h"

#include <memory>
#include <vector>

namespace qx4d {

class TextReader;

/// Peeks at the next token. None: `field` stays and nothing is read. "{": an envelope
/// bound to `field` reads the block and joins `ownerEnvelopes`, the envelope list of the
/// scene element that owns `field`, which then evaluates it. Anything else: `field`
/// becomes `ReadFloat(reader)`.
void ReadFloatOrEnvelope(TextReader& reader, float& field, std::vector<std::unique_ptr<Envelope>>& ownerEnvelopes);

}  // namespace qx4d
