// The image file readers on any bytes: image information (DDS by our reader, the other
// formats through stb_image) and the DDS reader. Inputs that do not start with "DDS " are
// also made the parameters and pixels of a file by the writer, so that text seeds reach
// the deep paths too.
#include "platform/gpu/DdsFile.h"
#include "platform/gpu/ImageFile.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace {

constexpr qx::gpu::D3DFORMAT kFormats[] = {qx::gpu::D3DFMT_A8R8G8B8, qx::gpu::D3DFMT_X8R8G8B8, qx::gpu::D3DFMT_L8,
                                           qx::gpu::D3DFMT_A8,       qx::gpu::D3DFMT_DXT1,     qx::gpu::D3DFMT_DXT3,
                                           qx::gpu::D3DFMT_DXT5};

void readEveryCut(std::span<const uint8_t> file)
{
    qx::gpu::D3DXIMAGE_INFO info;
    (void)qx::gpu::D3DXGetImageInfoFromFileInMemory(file.data(), qx::UINT(file.size()), &info);
    (void)qx::gpu::readDds(file);
    (void)qx::gpu::readDds(file.first(file.size() / 2));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    readEveryCut({data, size});
    if (size < 5 || std::memcmp(data, "DDS ", 4) == 0) return 0;
    const auto format = kFormats[data[0] % std::size(kFormats)];
    const auto width = qx::UINT(data[1] % 64 + 1), height = qx::UINT(data[2] % 64 + 1);
    const auto levels = qx::UINT(data[3] % 8 + 1);
    const bool cube = data[4] & 1;
    auto file = qx::gpu::writeDds(format, width, height, levels, cube, {});
    file.insert(file.end(), data + 5, data + size);
    readEveryCut(file);
    return 0;
}
