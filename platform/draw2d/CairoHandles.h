#pragma once
// Owners of Cairo objects, so that every path releases them.
#include <cairo.h>

#include <memory>

namespace qx::draw2d {

struct CairoContextDeleter {
    void operator()(cairo_t* cr) const { cairo_destroy(cr); }
};
struct CairoSurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct CairoPatternDeleter {
    void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};

using CairoContext = std::unique_ptr<cairo_t, CairoContextDeleter>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoSurfaceDeleter>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, CairoPatternDeleter>;

}  // namespace qx::draw2d
