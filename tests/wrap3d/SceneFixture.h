#pragma once
// Tests of the scene bridge on the content pack of the build: the process-wide data path
// is set once, as an editor does before anything else, and frames are told apart by the
// colour that dominates where the scene's geometry puts them.
#include "host/DynamicEffect.h"
#include "wrap3d/SceneBridge.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace qx::test {

class SceneTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        if (IsContextReady()) return;
        com::ComPtr<CQXDynamicEffect> host(CQXDynamicEffect::Create());
        Bstr dataPath(std::u16string(u"" QX_DATA_DIR));
        host->SetGlobalDataPath(dataPath.get());
    }
    void SetUp() override
    {
        if (!IsContextReady()) GTEST_SKIP() << "the scene context can't start here (no EGL device)";
    }
};

/// The parameter text of the effect's defaults, as an editor fills it in.
inline std::u16string DefaultParams(CQXDynamicEffect& host, LONG id)
{
    LONG index = 0, values[16] = {}, count = 0;
    host.GetIndexFromID(id, &index);
    host.GetEffectDefaults(index, values, &count);
    std::u16string text;
    for (LONG i = 0; i < count; ++i) {
        for (const char c : std::to_string(values[i])) text.push_back(char16_t(c));
        text.push_back(u';');
    }
    return text;
}

/// Four quadrants: red top left, green top right, blue bottom left, yellow bottom right.
inline std::vector<uint32_t> QuadrantFrame(LONG width, LONG height)
{
    std::vector<uint32_t> frame(size_t(width * height));
    for (LONG y = 0; y < height; ++y) {
        for (LONG x = 0; x < width; ++x) {
            const bool right = x >= width / 2, bottom = y >= height / 2;
            frame[size_t(y * width + x)] =
                bottom ? (right ? 0xFFE0E020u : 0xFF2020E0u) : (right ? 0xFF20E020u : 0xFFE02020u);
        }
    }
    return frame;
}

/// The sample at (x, y) in normalised device coordinates: -1 to 1, y up.
inline uint32_t At(const std::vector<uint32_t>& frame, LONG width, float x, float y)
{
    const LONG height = LONG(frame.size()) / width;
    const LONG column = std::clamp<LONG>(LONG(std::lround((x + 1) * 0.5f * float(width))), 0, width - 1);
    const LONG row = std::clamp<LONG>(LONG(std::lround((1 - y) * 0.5f * float(height))), 0, height - 1);
    return frame[size_t(row * width + column)];
}

enum class Colour { Red, Green, Blue, Yellow, Dark, Other };

inline std::ostream& operator<<(std::ostream& out, Colour colour)
{
    static const char* const kNames[] = {"red", "green", "blue", "yellow", "dark", "other"};
    return out << kNames[int(colour)];
}

/// Which of the quadrants' colours a lit, shaded sample shows, or dark for the backdrop.
inline Colour Dominant(uint32_t pixel)
{
    const int r = int((pixel >> 16) & 0xFF), g = int((pixel >> 8) & 0xFF), b = int(pixel & 0xFF);
    if (std::max({r, g, b}) < 110) return Colour::Dark;
    const int margin = 60;
    if (r > b + margin && g > b + margin && std::abs(r - g) < margin) return Colour::Yellow;
    if (r > g + margin && r > b + margin) return Colour::Red;
    if (g > r + margin && g > b + margin) return Colour::Green;
    if (b > r + margin && b > g + margin) return Colour::Blue;
    return Colour::Other;
}

/// The mean difference of the colour channels of two frames of the same size.
inline double MeanDifference(const std::vector<uint32_t>& a, const std::vector<uint32_t>& b)
{
    double sum = 0.0;
    for (size_t i = 0; i < a.size(); ++i)
        for (const int shift : {0, 8, 16}) sum += std::abs(int((a[i] >> shift) & 0xFF) - int((b[i] >> shift) & 0xFF));
    return sum / (3.0 * double(a.size()));
}

}  // namespace qx::test
