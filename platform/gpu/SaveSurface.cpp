// D3DXSaveSurfaceToFile through stb_image_write.
#include "platform/gpu/ImageFile.h"

#include <stb_image_write.h>

#include <cstdio>
#include <memory>

namespace qx::gpu {

namespace {

void appendToFile(void* context, void* data, int size)
{
    std::fwrite(data, 1, size_t(size), static_cast<std::FILE*>(context));
}

// The surface's pixels as R, G, B, A bytes, row 0 on top; X8R8G8B8 gets an opaque alpha.
bool readRgba(Surface& surface, std::vector<uint8_t>& rgba)
{
    const D3DSURFACE_DESC desc = surface.desc();
    if (desc.Format != D3DFMT_A8R8G8B8 && desc.Format != D3DFMT_X8R8G8B8) return false;
    if (surface.texture()) {
        if (!surface.texture()->download(surface.face(), surface.level(), rgba)) return false;
    } else {
        rgba = surface.systemBytes();
    }
    for (size_t i = 0; i + 3 < rgba.size(); i += 4) {
        std::swap(rgba[i], rgba[i + 2]);
        if (desc.Format == D3DFMT_X8R8G8B8) rgba[i + 3] = 0xFF;
    }
    return true;
}

}  // namespace

HRESULT D3DXSaveSurfaceToFile(const std::string& path, D3DXIMAGE_FILEFORMAT format, Surface& surface)
{
    std::vector<uint8_t> rgba;
    if (format > D3DXIFF_PNG || !readRgba(surface, rgba)) return D3DERR_INVALIDCALL;
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> file(std::fopen(path.c_str(), "wb"), &std::fclose);
    if (!file) return D3DERR_INVALIDCALL;
    const auto width = int(surface.desc().Width), height = int(surface.desc().Height);
    int written = 0;
    switch (format) {
    case D3DXIFF_BMP: written = stbi_write_bmp_to_func(appendToFile, file.get(), width, height, 4, rgba.data()); break;
    case D3DXIFF_JPG:
        written = stbi_write_jpg_to_func(appendToFile, file.get(), width, height, 4, rgba.data(), 95);
        break;
    case D3DXIFF_TGA: written = stbi_write_tga_to_func(appendToFile, file.get(), width, height, 4, rgba.data()); break;
    default:
        written = stbi_write_png_to_func(appendToFile, file.get(), width, height, 4, rgba.data(), width * 4);
        break;
    }
    return written ? D3D_OK : D3DERR_INVALIDCALL;
}

}  // namespace qx::gpu
