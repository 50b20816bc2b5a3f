#pragma once
// The names of the states an effect pass may assign, and of their values, with Direct3D's
// numbers.
#include "platform/gpu/FxParser.h"

#include <string>
#include <vector>

namespace qx::gpu {

/// Reads `Name[index] = value` into an assignment. False for a state or value this layer
/// does not know; the pass then goes on without it.
bool readStateAssignment(const std::string& name, DWORD index, const std::vector<std::string>& value,
                         StateAssignment& out);

}  // namespace qx::gpu
