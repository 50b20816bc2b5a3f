#pragma once
#include <span>
#include <string_view>

namespace qx::qxfx {

/// `qxfx demo`: every effect of the catalogue over the test pattern, written as one video
/// and a contact sheet. Returns the process exit code.
int runDemo(std::span<const std::string_view> args);

}  // namespace qx::qxfx
