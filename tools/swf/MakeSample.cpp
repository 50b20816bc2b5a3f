// qx-swf-sample: writes the sample animation of the SWF writer, or the fuzzing corpus.
//   qx-swf-sample OUT.swf [FRAMES]
//   qx-swf-sample --corpus DIR
#include "tools/swf/SampleMovies.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace {

bool write(const std::string& path, const std::vector<uint8_t>& bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    return bool(out);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--corpus") {
        for (const auto& movie : qx::swftool::corpusMovies()) {
            if (!write(std::string(argv[2]) + "/" + movie.name, movie.bytes)) {
                std::fprintf(stderr, "qx-swf-sample: cannot write %s/%s\n", argv[2], movie.name.c_str());
                return 1;
            }
        }
        return 0;
    }
    if (argc < 2 || argc > 3) {
        std::fputs("usage: qx-swf-sample OUT.swf [FRAMES] | --corpus DIR\n", stderr);
        return 2;
    }
    const int frames = argc == 3 ? std::atoi(argv[2]) : 50;
    if (frames < 1 || frames > 100000) {
        std::fputs("qx-swf-sample: FRAMES is 1 to 100000\n", stderr);
        return 2;
    }
    if (!write(argv[1], qx::swftool::sampleAnimation(frames))) {
        std::fprintf(stderr, "qx-swf-sample: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
