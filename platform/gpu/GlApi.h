#pragma once
// OpenGL for the sources of this layer. No public header of the layer includes it: the
// names of OpenGL objects travel as 32-bit integers there, and only the sources see the
// OpenGL types and calls.
#include "platform/gpu/GlName.h"

#include <epoxy/gl.h>

#include <cstdint>
#include <memory>
#include <type_traits>

namespace qx::gpu {

static_assert(std::is_same_v<GLuint, uint32_t> && std::is_same_v<GLint, int32_t>,
              "object names and locations travel as 32-bit integers in the public headers");

/// Forgets earlier OpenGL errors, so that the next glGetError speaks of what follows.
inline void drainGlErrors()
{
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i) {}
}

/// Makes a new object of the kind with glCreate* (the context must be current).
GlName createGlName(const std::shared_ptr<Context>& context, GlKind kind, GLenum target = 0);

}  // namespace qx::gpu
