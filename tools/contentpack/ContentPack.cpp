// Writes the binary part of the default content pack: the object files of the scenes
// and the pictures (the placeholder cards that live frames replace, the backdrops, the
// lens-flare and particle pictures, the sepia filter's ramp).
//   qx4d_contentpack <data folder>
#include "tools/contentpack/PackFlares.h"
#include "tools/contentpack/PackImages.h"
#include "tools/contentpack/PackMeshes.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using namespace qx4d::tools;

bool WriteFile(const fs::path& path, const std::vector<uint8_t>& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return bool(out);
}

/// A picture's name under "IMAGES:", its backslashes made folders.
fs::path ImagePath(std::string name)
{
    std::replace(name.begin(), name.end(), '\\', '/');
    return fs::path(name);
}

bool WriteObjects(const fs::path& objects)
{
    const SurfaceModel lit = TexturedSurface(0.35f, 0.25f);
    // Faces that meet the camera straight on show their frame at full strength: a light
    // from the camera gives the 0.4 that the luminosity lacks.
    const SurfaceModel frameLit = TexturedSurface(0.6f, 0.0f);
    const std::string sample1 = "cartes\\sample 1.dds";
    const std::string everyFace[6] = {sample1, sample1, sample1, sample1, sample1, sample1};
    const std::string transitionFaces[6] = {"cartes\\sample 3.dds", "", "", "cartes\\sample 4.dds", "", ""};
    bool written = WriteFile(objects / "cube.qxo", WriteObject(Box(everyFace, lit))) &&
                   WriteFile(objects / "plane.qxo", WriteObject(TwoSidedPlane(sample1, lit))) &&
                   WriteFile(objects / "flag.qxo", WriteObject(WavingFlag(sample1, lit, 32, 24, 30, 12))) &&
                   WriteFile(objects / "screen.qxo", WriteObject(TwoSidedPlane("cartes\\sample 2.dds", frameLit))) &&
                   WriteFile(objects / "frame.qxo", WriteObject(TwoSidedPlane(sample1, frameLit))) &&
                   WriteFile(objects / "transition-cube.qxo", WriteObject(Box(transitionFaces, frameLit)));
    for (int card = 1; card <= 4; ++card) {
        const std::string name = "cartes\\carte " + std::to_string(card) + ".dds";
        written = written &&
                  WriteFile(objects / ("card" + std::to_string(card) + ".qxo"), WriteObject(TwoSidedPlane(name, lit)));
    }
    return written;
}

bool WriteImages(const fs::path& images)
{
    const uint32_t tints[4] = {0xFF3A6EA5u, 0xFFA53A5Eu, 0xFF3AA56Bu, 0xFFA5883Au};
    bool written = true;
    for (int i = 0; i < 4; ++i) {
        const std::string number = std::to_string(i + 1);
        written =
            written &&
            WriteFile(images / "cartes" / ("sample " + number + ".dds"), DdsOf(PlaceholderCard(256, tints[i]))) &&
            WriteFile(images / "cartes" / ("carte " + number + ".dds"), DdsOf(PlaceholderCard(256, tints[3 - i])));
    }
    written = written &&
              WriteFile(images / "backdrops" / "night.dds", DdsOf(Gradient(512, 256, 0xFF05070Fu, 0xFF1C2550u))) &&
              WriteFile(images / "backdrops" / "dusk.dds", DdsOf(Gradient(512, 256, 0xFF141A33u, 0xFF5A3A4Au))) &&
              WriteFile(images / "backdrops" / "studio.dds", DdsOf(Gradient(512, 256, 0xFF101012u, 0xFF3A3A40u)));
    auto pictures = FlarePictures();
    for (auto& picture : ParticlePictures()) pictures.push_back(std::move(picture));
    for (const auto& [name, picture] : pictures)
        written = written && WriteFile(images / ImagePath(name), DdsOf(picture));
    return written && WriteFile(images / "sepia.tga", TgaOf(SepiaRamp()));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fputs("usage: qx4d_contentpack <data folder>\n", stderr);
        return 2;
    }
    const fs::path data = argv[1];
    if (!WriteObjects(data / "Objects") || !WriteImages(data / "Images")) {
        std::fprintf(stderr, "qx4d_contentpack: cannot write into %s\n", argv[1]);
        return 1;
    }
    return 0;
}
