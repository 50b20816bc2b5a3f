#pragma once
// The task memory of component interfaces: blocks a callee allocates and hands to its
// caller, who frees them with CoTaskMemFree.
#include <cstddef>

namespace qx {

/// A block of `size` bytes, or null when the memory cannot be had.
void* CoTaskMemAlloc(size_t size);
/// Frees a block of CoTaskMemAlloc; null is allowed.
void CoTaskMemFree(void* block);

}  // namespace qx
