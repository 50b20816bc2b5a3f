#pragma once
// The module's string table: the French texts shown to users, by resource id.
#include <optional>
#include <string_view>

namespace qx::resources {

/// The text of string resource `id`, or nothing when the table has no such string.
std::optional<std::u16string_view> LoadString(int id);

}  // namespace qx::resources
