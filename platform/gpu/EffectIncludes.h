#pragma once
// `#include "name"` (or <name>) lines of an effect text, replaced by the text that the
// caller's resolver gives for the name. The engine resolves names through its file
// system; this layer knows nothing of files.
#include <functional>
#include <optional>
#include <string>

namespace qx::gpu {

using IncludeResolver = std::function<std::optional<std::string>(const std::string& name)>;

/// False when a name cannot be resolved, includes nest deeper than 16 levels (a cycle),
/// or the whole text would pass 16 MiB.
bool expandIncludes(const std::string& text, const IncludeResolver& resolver, std::string& out);

}  // namespace qx::gpu
