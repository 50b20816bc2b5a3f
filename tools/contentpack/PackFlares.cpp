#include "tools/contentpack/PackFlares.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

namespace qx4d::tools {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr uint32_t kFlareSize = 128;

/// A picture whose every pixel is `shade(x, y)` with x and y from -1 to 1 across it, the
/// result (r, g, b, a) from 0 to 1.
struct Rgba {
    double r, g, b, a;
};
Picture Draw(uint32_t width, uint32_t height, const std::function<Rgba(double, double)>& shade)
{
    Picture picture{width, height, std::vector<uint32_t>(size_t(width) * height)};
    const auto byte = [](double v) { return uint32_t(std::clamp(std::lround(v * 255.0), 0L, 255L)); };
    for (uint32_t y = 0; y < height; ++y) {
        for (uint32_t x = 0; x < width; ++x) {
            const Rgba c = shade((x + 0.5) / width * 2.0 - 1.0, (y + 0.5) / height * 2.0 - 1.0);
            picture.pixels[size_t(y) * width + x] = byte(c.a) << 24 | byte(c.r) << 16 | byte(c.g) << 8 | byte(c.b);
        }
    }
    return picture;
}

/// White light of `level`, opaque: flares add their pictures, so black is no light.
Rgba Light(double level) { return {level, level, level, 1.0}; }

double Smooth(double edge0, double edge1, double x)
{
    const double t = std::clamp((x - edge0) / (edge1 - edge0), 0.0, 1.0);
    return t * t * (3.0 - 2.0 * t);
}

/// A colour of the spectrum from red (0) to violet (1).
Rgba Spectrum(double t)
{
    const double hue = std::clamp(t, 0.0, 1.0) * 0.8;
    const auto channel = [&](double offset) {
        return std::clamp(std::abs(std::fmod(hue * 6.0 + offset, 6.0) - 3.0) - 1.0, 0.0, 1.0);
    };
    return {channel(0.0), channel(4.0), channel(2.0), 1.0};
}

/// A small generator of its own, so that the pictures are the same on every build.
class Noise {
public:
    explicit Noise(uint32_t seed) : state(seed) {}
    double Next()
    {
        state = state * 1664525u + 1013904223u;
        return double(state >> 8) / double(1u << 24);
    }

private:
    uint32_t state;
};

Picture Glow(double red, double green, double blue)
{
    return Draw(kFlareSize, kFlareSize, [=](double x, double y) {
        const double r = std::hypot(x, y);
        // A hot core and a wide, faint halo: the quad spans most of the frame.
        const double level =
            std::exp(-r * r * 60.0) + 0.22 * std::exp(-r * r * 9.0) + 0.06 * std::pow(std::max(0.0, 1.0 - r), 2.0);
        return Rgba{level * red, level * green, level * blue, 1.0};
    });
}

/// A soft disc with a brighter rim: the reflections of round apertures.
Picture Circular()
{
    return Draw(kFlareSize, kFlareSize, [](double x, double y) {
        const double r = std::hypot(x, y);
        return Light((0.55 + 0.45 * Smooth(0.6, 0.92, r)) * (1.0 - Smooth(0.9, 1.0, r)));
    });
}

/// A soft regular polygon of `sides`, a corner at the top.
Picture Polygon(int sides)
{
    return Draw(kFlareSize, kFlareSize, [=](double x, double y) {
        const double sector = 2.0 * kPi / sides;
        const double angle = std::atan2(x, -y);
        const double within = std::fmod(std::fmod(angle, sector) + sector, sector) - sector / 2.0;
        // Distance to the nearest edge's line, in units of the inscribed radius.
        const double reach = std::hypot(x, y) * std::cos(within) / std::cos(sector / 2.0);
        return Light((0.6 + 0.4 * Smooth(0.7, 0.95, reach)) * (1.0 - Smooth(0.9, 1.0, reach)));
    });
}

Picture Ring(double radius, double width, bool rainbow)
{
    return Draw(kFlareSize, kFlareSize, [=](double x, double y) {
        const double across = (std::hypot(x, y) - radius) / width;
        const double level = std::exp(-across * across * 4.0);
        if (!rainbow) return Light(level);
        const Rgba colour = Spectrum(across * 0.5 + 0.5);
        return Rgba{colour.r * level, colour.g * level, colour.b * level, 1.0};
    });
}

/// Thin rays of random length and strength around the centre.
Picture RandomStreaks()
{
    Noise noise(20240611u);
    std::vector<std::array<double, 3>> rays(48);
    for (auto& ray : rays) ray = {noise.Next() * 2.0 * kPi, 0.4 + 0.6 * noise.Next(), 0.1 + 0.35 * noise.Next()};
    return Draw(kFlareSize, kFlareSize, [&](double x, double y) {
        const double r = std::hypot(x, y), angle = std::atan2(y, x);
        double level = 0.0;
        for (const auto& [direction, length, strength] : rays) {
            const double off = std::remainder(angle - direction, 2.0 * kPi);
            level += strength * std::exp(-off * off * 4000.0) * std::pow(std::max(0.0, 1.0 - r / length), 2.0);
        }
        return Light(std::min(level, 1.0));
    });
}

/// A long horizontal streak, thin and blue-white, as an anamorphic lens draws it.
Picture Anamorphic()
{
    return Draw(256, 32, [](double x, double y) {
        const double level = std::exp(-y * y * 12.0) * std::pow(std::max(0.0, 1.0 - std::abs(x)), 1.5);
        return Rgba{level * 0.8, level * 0.9, level, 1.0};
    });
}

/// `rays` rays from the centre, and as many shorter ones between them when `doubled`.
Picture Star(int rays, bool doubled)
{
    return Draw(kFlareSize, kFlareSize, [=](double x, double y) {
        const double r = std::hypot(x, y), angle = std::atan2(y, x);
        double level = 0.0;
        const int count = doubled ? rays * 2 : rays;
        for (int i = 0; i < count; ++i) {
            const bool shorter = doubled && (i % 2 == 1);
            const double off = std::remainder(angle - 2.0 * kPi * i / count - kPi / 2.0, 2.0 * kPi);
            const double width = 0.012 + 0.02 * r;
            level += 0.8 * std::exp(-off * off / (width * width)) *
                     std::pow(std::max(0.0, 1.0 - r / (shorter ? 0.6 : 1.0)), 2.0);
        }
        return Light(std::min(1.0, level + 0.3 * std::exp(-r * r * 60.0)));
    });
}

/// A white spark with a hot core, whose alpha follows its light.
Picture Spark()
{
    return Draw(64, 64, [](double x, double y) {
        const double r = std::hypot(x, y);
        const double level = std::min(1.0, std::pow(std::max(0.0, 1.0 - r), 2.0) + std::exp(-r * r * 30.0));
        return Rgba{level, level, level, level};
    });
}

/// A soft round flake, white, its alpha falling off to the edge.
Picture Flake()
{
    return Draw(64, 64, [](double x, double y) {
        const double r = std::hypot(x, y);
        return Rgba{1.0, 1.0, 1.0, 1.0 - Smooth(0.35, 1.0, r)};
    });
}

/// A puff of smoke: soft lumps of grey, alpha thinning to the edge.
Picture Smoke()
{
    Noise noise(77u);
    std::vector<std::array<double, 3>> lumps(14);
    for (auto& lump : lumps) lump = {noise.Next() * 1.0 - 0.5, noise.Next() * 1.0 - 0.5, 0.25 + 0.2 * noise.Next()};
    return Draw(128, 128, [&](double x, double y) {
        double density = 0.0;
        for (const auto& [cx, cy, radius] : lumps) {
            const double d = std::hypot(x - cx, y - cy) / radius;
            density += std::exp(-d * d * 1.5);
        }
        const double alpha = std::min(1.0, density * 0.5) * (1.0 - Smooth(0.7, 1.0, std::hypot(x, y)));
        const double shade = 0.75 + 0.15 * std::min(1.0, density * 0.3);
        return Rgba{shade, shade, shade, alpha};
    });
}

/// A sheet of two by two cells: a star, a disc, a diamond and a ring, white light.
Picture Shapes()
{
    return Draw(128, 128, [](double x, double y) {
        const int column = x < 0.0 ? 0 : 1, row = y < 0.0 ? 0 : 1;
        const double cx = (x - (column ? 0.5 : -0.5)) * 2.0, cy = (y - (row ? 0.5 : -0.5)) * 2.0;
        const double r = std::hypot(cx, cy), angle = std::atan2(cy, cx);
        double level = 0.0;
        switch (row * 2 + column) {
        case 0: {
            const double edge = 0.55 + 0.3 * std::cos(5.0 * (angle - kPi / 2.0));
            level = 1.0 - Smooth(edge - 0.12, edge, r);
            break;
        }
        case 1: level = 1.0 - Smooth(0.6, 0.9, r); break;
        case 2: level = 1.0 - Smooth(0.6, 0.9, std::abs(cx) + std::abs(cy)); break;
        default: level = std::exp(-std::pow((r - 0.65) / 0.12, 2.0)); break;
        }
        return Rgba{level, level, level, level};
    });
}

}  // namespace

std::vector<std::pair<std::string, Picture>> FlarePictures()
{
    std::vector<std::pair<std::string, Picture>> pictures = {
        {"LensFlare\\glow.dds", Glow(1.0, 0.97, 0.9)},     {"LensFlare\\redglow.dds", Glow(1.0, 0.55, 0.3)},
        {"LensFlare\\circular.dds", Circular()},           {"LensFlare\\rainbowring.dds", Ring(0.78, 0.16, true)},
        {"LensFlare\\ring2.dds", Ring(0.85, 0.05, false)}, {"LensFlare\\randstreak.dds", RandomStreaks()},
        {"LensFlare\\anamorphic.dds", Anamorphic()},
    };
    for (int sides = 5; sides <= 8; ++sides)
        pictures.emplace_back("LensFlare\\" + std::to_string(sides) + "sided.dds", Polygon(sides));
    for (int rays = 2; rays <= 10; rays += 2) {
        pictures.emplace_back("LensFlare\\star_" + std::to_string(rays) + ".dds", Star(rays, false));
        pictures.emplace_back("LensFlare\\star_" + std::to_string(rays) + "_" + std::to_string(rays) + ".dds",
                              Star(rays, true));
    }
    return pictures;
}

std::vector<std::pair<std::string, Picture>> ParticlePictures()
{
    return {{"particles\\spark.dds", Spark()},
            {"particles\\flake.dds", Flake()},
            {"particles\\smoke.dds", Smoke()},
            {"particles\\shapes.dds", Shapes()}};
}

Picture SepiaRamp()
{
    // Dark brown, a warm middle tone, cream.
    const double stops[3][3] = {{0.10, 0.05, 0.02}, {0.52, 0.34, 0.16}, {1.0, 0.95, 0.82}};
    return Draw(256, 4, [&](double x, double) {
        const double t = x * 0.5 + 0.5;
        const int segment = t < 0.5 ? 0 : 1;
        const double f = t < 0.5 ? t * 2.0 : t * 2.0 - 1.0;
        const auto mix = [&](int c) { return stops[segment][c] + (stops[segment + 1][c] - stops[segment][c]) * f; };
        return Rgba{mix(0), mix(1), mix(2), 1.0};
    });
}

std::vector<uint8_t> TgaOf(const Picture& picture)
{
    std::vector<uint8_t> file(18, 0);
    file[2] = 2;  // uncompressed true colour
    file[12] = uint8_t(picture.width & 0xFF);
    file[13] = uint8_t(picture.width >> 8);
    file[14] = uint8_t(picture.height & 0xFF);
    file[15] = uint8_t(picture.height >> 8);
    file[16] = 32;
    file[17] = 0x28;  // 8 bits of alpha, the top row first
    for (const uint32_t pixel : picture.pixels)
        for (const int shift : {0, 8, 16, 24}) file.push_back(uint8_t(pixel >> shift));
    return file;
}

}  // namespace qx4d::tools
