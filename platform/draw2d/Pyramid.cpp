#include "platform/draw2d/Pyramid.h"

#include "platform/draw2d/Bitmap.h"

#include <algorithm>
#include <new>

namespace qx::draw2d {

namespace {

inline uint32_t premultiplied(uint32_t s)
{
    const uint32_t a = s >> 24;
    if (a == 255) return s;
    const uint32_t rb = (s & 0x00FF00FFu) * a + 0x00800080u;
    const uint32_t g = (s & 0x0000FF00u) * a + 0x00008000u;
    return (s & 0xFF000000u) | (((rb + ((rb >> 8) & 0x00FF00FFu)) >> 8) & 0x00FF00FFu) |
           (((g + ((g >> 8) & 0x0000FF00u)) >> 8) & 0x0000FF00u);
}

// The rounded mean of four samples, two channels per lane.
inline uint32_t mean(uint32_t a, uint32_t b, uint32_t c, uint32_t d)
{
    const uint32_t rb = (a & 0x00FF00FFu) + (b & 0x00FF00FFu) + (c & 0x00FF00FFu) + (d & 0x00FF00FFu) + 0x00020002u;
    const uint32_t ag = ((a >> 8) & 0x00FF00FFu) + ((b >> 8) & 0x00FF00FFu) + ((c >> 8) & 0x00FF00FFu) +
                        ((d >> 8) & 0x00FF00FFu) + 0x00020002u;
    return ((rb >> 2) & 0x00FF00FFu) | ((ag << 6) & 0xFF00FF00u);
}

// Halves `source`; `prepare` turns each of its samples into a premultiplied, keyed one.
template <typename Prepare>
bool halve(const SampleGrid& source, std::vector<uint32_t>& samples, SampleGrid& grid, Prepare prepare)
{
    const int width = (source.width + 1) / 2;
    const int height = (source.height + 1) / 2;
    try {
        samples.resize(size_t(width) * size_t(height));
    } catch (const std::bad_alloc&) {
        return false;
    }
    for (int y = 0; y < height; ++y) {
        const uint32_t* top = source.samples + size_t(2 * y) * size_t(source.pitch);
        const uint32_t* bottom = source.samples + size_t(std::min(2 * y + 1, source.height - 1)) * size_t(source.pitch);
        uint32_t* out = samples.data() + size_t(y) * size_t(width);
        for (int x = 0; x < width; ++x) {
            const int left = 2 * x;
            const int right = std::min(left + 1, source.width - 1);
            out[x] = mean(prepare(top[left]), prepare(top[right]), prepare(bottom[left]), prepare(bottom[right]));
        }
    }
    grid = {samples.data(), width, height, width};
    return true;
}

}  // namespace

const SampleGrid* Pyramid::level(const Bitmap& image, int level, const KeyRange& key)
{
    if (level < 1) return nullptr;
    if (!(key == key_)) {
        levels_.clear();
        key_ = key;
    }
    while (int(levels_.size()) < level) {
        const SampleGrid source = levels_.empty()
                                      ? SampleGrid{image.data(), image.width(), image.height(), image.pitch()}
                                      : levels_.back().grid;
        if (source.width < 2 && source.height < 2) return nullptr;
        Level next;
        const bool made = levels_.empty()
                              ? halve(source, next.samples, next.grid,
                                      [&key](uint32_t s) { return key.enabled && key.keys(s) ? 0u : premultiplied(s); })
                              : halve(source, next.samples, next.grid, [](uint32_t s) { return s; });
        if (!made) return nullptr;
        levels_.push_back(std::move(next));
        levels_.back().grid.samples = levels_.back().samples.data();
    }
    return &levels_[size_t(level - 1)].grid;
}

}  // namespace qx::draw2d
