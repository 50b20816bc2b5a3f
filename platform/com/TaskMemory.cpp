#include "platform/com/TaskMemory.h"

#include <cstdlib>

namespace qx {

void* CoTaskMemAlloc(size_t size) { return std::malloc(size); }

void CoTaskMemFree(void* block) { std::free(block); }

}  // namespace qx
