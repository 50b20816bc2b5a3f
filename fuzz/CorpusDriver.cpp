// Runs a libFuzzer target over files and folders of inputs, for builds without libFuzzer.
// Each argument is a file or a folder whose regular files are all run.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

void runFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv)
{
    size_t count = 0;
    for (int i = 1; i < argc; ++i) {
        const std::filesystem::path arg(argv[i]);
        if (std::filesystem::is_directory(arg)) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(arg)) {
                if (entry.is_regular_file()) {
                    runFile(entry.path());
                    ++count;
                }
            }
        } else {
            runFile(arg);
            ++count;
        }
    }
    std::printf("%zu inputs ran\n", count);
    return count > 0 ? 0 : 1;
}
