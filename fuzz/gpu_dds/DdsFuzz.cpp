// The DDS reader on any bytes. Inputs that do not start with "DDS " become the parameters
// and pixels of a file made by the writer, so that text seeds reach the deep paths too.
#include "platform/gpu/DdsFile.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace {

constexpr qx::gpu::D3DFORMAT kFormats[] = {qx::gpu::D3DFMT_A8R8G8B8, qx::gpu::D3DFMT_X8R8G8B8, qx::gpu::D3DFMT_L8,
                                           qx::gpu::D3DFMT_A8, qx::gpu::D3DFMT_DXT1, qx::gpu::D3DFMT_DXT3,
                                           qx::gpu::D3DFMT_DXT5};

void readEveryCut(std::span<const uint8_t> file)
{
    (void)qx::gpu::readDds(file);
    (void)qx::gpu::readDds(file.first(file.size() / 2));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size >= 4 && std::memcmp(data, "DDS ", 4) == 0) {
        readEveryCut({data, size});
        return 0;
    }
    if (size < 5)
        return 0;
    const auto format = kFormats[data[0] % std::size(kFormats)];
    const auto width = qx::UINT(data[1] % 64 + 1), height = qx::UINT(data[2] % 64 + 1);
    const auto levels = qx::UINT(data[3] % 8 + 1);
    const bool cube = data[4] & 1;
    auto file = qx::gpu::writeDds(format, width, height, levels, cube, {});
    file.insert(file.end(), data + 5, data + size);
    readEveryCut(file);
    return 0;
}
