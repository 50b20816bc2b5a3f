#pragma once
// The Direct3D 9 numbers that reach data and callers: formats, pools, usages, render and
// sampler states, blend codes, primitive types, vertex declaration bytes, lock flags and
// the device's status codes. Files and effect texts carry these numbers, so they keep
// their Windows values.
#include "platform/com/HResult.h"

#include <cstdint>

namespace qx::gpu {

constexpr DWORD makeFourCC(char a, char b, char c, char d)
{
    return DWORD(uint8_t(a)) | DWORD(uint8_t(b)) << 8 | DWORD(uint8_t(c)) << 16 | DWORD(uint8_t(d)) << 24;
}

using D3DFORMAT = DWORD;
inline constexpr D3DFORMAT D3DFMT_UNKNOWN = 0;
inline constexpr D3DFORMAT D3DFMT_A8R8G8B8 = 21;
inline constexpr D3DFORMAT D3DFMT_X8R8G8B8 = 22;
inline constexpr D3DFORMAT D3DFMT_A8 = 28;
inline constexpr D3DFORMAT D3DFMT_L8 = 50;
inline constexpr D3DFORMAT D3DFMT_D32 = 71;
inline constexpr D3DFORMAT D3DFMT_D24S8 = 75;
inline constexpr D3DFORMAT D3DFMT_D24X8 = 77;
inline constexpr D3DFORMAT D3DFMT_D16 = 80;
inline constexpr D3DFORMAT D3DFMT_INDEX16 = 101;
inline constexpr D3DFORMAT D3DFMT_R32F = 114;
inline constexpr D3DFORMAT D3DFMT_INDEX32 = 102;
inline constexpr D3DFORMAT D3DFMT_DXT1 = makeFourCC('D', 'X', 'T', '1');
inline constexpr D3DFORMAT D3DFMT_DXT3 = makeFourCC('D', 'X', 'T', '3');
inline constexpr D3DFORMAT D3DFMT_DXT5 = makeFourCC('D', 'X', 'T', '5');

using D3DPOOL = DWORD;
inline constexpr D3DPOOL D3DPOOL_DEFAULT = 0;
inline constexpr D3DPOOL D3DPOOL_MANAGED = 1;
inline constexpr D3DPOOL D3DPOOL_SYSTEMMEM = 2;

inline constexpr DWORD D3DUSAGE_RENDERTARGET = 0x1;
inline constexpr DWORD D3DUSAGE_DEPTHSTENCIL = 0x2;
inline constexpr DWORD D3DUSAGE_WRITEONLY = 0x8;
inline constexpr DWORD D3DUSAGE_DYNAMIC = 0x200;

inline constexpr DWORD D3DLOCK_READONLY = 0x10;
inline constexpr DWORD D3DLOCK_DISCARD = 0x2000;
inline constexpr DWORD D3DLOCK_NOOVERWRITE = 0x1000;

using D3DRESOURCETYPE = DWORD;
inline constexpr D3DRESOURCETYPE D3DRTYPE_SURFACE = 1;
inline constexpr D3DRESOURCETYPE D3DRTYPE_TEXTURE = 3;
inline constexpr D3DRESOURCETYPE D3DRTYPE_CUBETEXTURE = 5;

using D3DPRIMITIVETYPE = DWORD;
inline constexpr D3DPRIMITIVETYPE D3DPT_POINTLIST = 1;
inline constexpr D3DPRIMITIVETYPE D3DPT_LINELIST = 2;
inline constexpr D3DPRIMITIVETYPE D3DPT_LINESTRIP = 3;
inline constexpr D3DPRIMITIVETYPE D3DPT_TRIANGLELIST = 4;
inline constexpr D3DPRIMITIVETYPE D3DPT_TRIANGLESTRIP = 5;
inline constexpr D3DPRIMITIVETYPE D3DPT_TRIANGLEFAN = 6;

using D3DRENDERSTATETYPE = DWORD;
inline constexpr D3DRENDERSTATETYPE D3DRS_ZENABLE = 7;
inline constexpr D3DRENDERSTATETYPE D3DRS_ZWRITEENABLE = 14;
inline constexpr D3DRENDERSTATETYPE D3DRS_ALPHATESTENABLE = 15;
inline constexpr D3DRENDERSTATETYPE D3DRS_SRCBLEND = 19;
inline constexpr D3DRENDERSTATETYPE D3DRS_DESTBLEND = 20;
inline constexpr D3DRENDERSTATETYPE D3DRS_CULLMODE = 22;
inline constexpr D3DRENDERSTATETYPE D3DRS_ZFUNC = 23;
inline constexpr D3DRENDERSTATETYPE D3DRS_ALPHAREF = 24;
inline constexpr D3DRENDERSTATETYPE D3DRS_ALPHAFUNC = 25;
inline constexpr D3DRENDERSTATETYPE D3DRS_ALPHABLENDENABLE = 27;
inline constexpr D3DRENDERSTATETYPE D3DRS_FOGENABLE = 28;
inline constexpr D3DRENDERSTATETYPE D3DRS_FOGCOLOR = 34;
inline constexpr D3DRENDERSTATETYPE D3DRS_POINTSIZE = 154;
inline constexpr D3DRENDERSTATETYPE D3DRS_COLORWRITEENABLE = 168;
inline constexpr D3DRENDERSTATETYPE D3DRS_BLENDOP = 171;
inline constexpr DWORD kRenderStateCount = 256;

using D3DBLEND = DWORD;
inline constexpr D3DBLEND D3DBLEND_ZERO = 1;
inline constexpr D3DBLEND D3DBLEND_ONE = 2;
inline constexpr D3DBLEND D3DBLEND_SRCCOLOR = 3;
inline constexpr D3DBLEND D3DBLEND_INVSRCCOLOR = 4;
inline constexpr D3DBLEND D3DBLEND_SRCALPHA = 5;
inline constexpr D3DBLEND D3DBLEND_INVSRCALPHA = 6;
inline constexpr D3DBLEND D3DBLEND_DESTALPHA = 7;
inline constexpr D3DBLEND D3DBLEND_INVDESTALPHA = 8;
inline constexpr D3DBLEND D3DBLEND_DESTCOLOR = 9;
inline constexpr D3DBLEND D3DBLEND_INVDESTCOLOR = 10;
inline constexpr D3DBLEND D3DBLEND_SRCALPHASAT = 11;

inline constexpr DWORD D3DBLENDOP_ADD = 1;
inline constexpr DWORD D3DBLENDOP_SUBTRACT = 2;
inline constexpr DWORD D3DBLENDOP_REVSUBTRACT = 3;
inline constexpr DWORD D3DBLENDOP_MIN = 4;
inline constexpr DWORD D3DBLENDOP_MAX = 5;

inline constexpr DWORD D3DCULL_NONE = 1;
inline constexpr DWORD D3DCULL_CW = 2;
inline constexpr DWORD D3DCULL_CCW = 3;

// D3DCMPFUNC: NEVER 1 .. ALWAYS 8.
inline constexpr DWORD D3DCMP_NEVER = 1;
inline constexpr DWORD D3DCMP_LESS = 2;
inline constexpr DWORD D3DCMP_EQUAL = 3;
inline constexpr DWORD D3DCMP_LESSEQUAL = 4;
inline constexpr DWORD D3DCMP_GREATER = 5;
inline constexpr DWORD D3DCMP_NOTEQUAL = 6;
inline constexpr DWORD D3DCMP_GREATEREQUAL = 7;
inline constexpr DWORD D3DCMP_ALWAYS = 8;

using D3DSAMPLERSTATETYPE = DWORD;
inline constexpr D3DSAMPLERSTATETYPE D3DSAMP_ADDRESSU = 1;
inline constexpr D3DSAMPLERSTATETYPE D3DSAMP_ADDRESSV = 2;
inline constexpr D3DSAMPLERSTATETYPE D3DSAMP_MAGFILTER = 5;
inline constexpr D3DSAMPLERSTATETYPE D3DSAMP_MINFILTER = 6;
inline constexpr D3DSAMPLERSTATETYPE D3DSAMP_MIPFILTER = 7;
inline constexpr DWORD kSamplerStateCount = 14;
inline constexpr DWORD kSamplerCount = 16;

inline constexpr DWORD D3DTEXF_NONE = 0;
inline constexpr DWORD D3DTEXF_POINT = 1;
inline constexpr DWORD D3DTEXF_LINEAR = 2;
inline constexpr DWORD D3DTADDRESS_WRAP = 1;
inline constexpr DWORD D3DTADDRESS_MIRROR = 2;
inline constexpr DWORD D3DTADDRESS_CLAMP = 3;

inline constexpr DWORD D3DCLEAR_TARGET = 1;
inline constexpr DWORD D3DCLEAR_ZBUFFER = 2;
inline constexpr DWORD D3DCLEAR_STENCIL = 4;

// Vertex declarations: D3DDECLTYPE and D3DDECLUSAGE.
inline constexpr BYTE D3DDECLTYPE_FLOAT1 = 0;
inline constexpr BYTE D3DDECLTYPE_FLOAT2 = 1;
inline constexpr BYTE D3DDECLTYPE_FLOAT3 = 2;
inline constexpr BYTE D3DDECLTYPE_FLOAT4 = 3;
inline constexpr BYTE D3DDECLTYPE_D3DCOLOR = 4;
inline constexpr BYTE D3DDECLTYPE_UBYTE4 = 5;
inline constexpr BYTE D3DDECLTYPE_SHORT2 = 6;
inline constexpr BYTE D3DDECLTYPE_SHORT4 = 7;
inline constexpr BYTE D3DDECLTYPE_UBYTE4N = 8;
inline constexpr BYTE D3DDECLTYPE_UNUSED = 17;

inline constexpr BYTE D3DDECLUSAGE_POSITION = 0;
inline constexpr BYTE D3DDECLUSAGE_BLENDWEIGHT = 1;
inline constexpr BYTE D3DDECLUSAGE_BLENDINDICES = 2;
inline constexpr BYTE D3DDECLUSAGE_NORMAL = 3;
inline constexpr BYTE D3DDECLUSAGE_PSIZE = 4;
inline constexpr BYTE D3DDECLUSAGE_TEXCOORD = 5;
inline constexpr BYTE D3DDECLUSAGE_TANGENT = 6;
inline constexpr BYTE D3DDECLUSAGE_BINORMAL = 7;
inline constexpr BYTE D3DDECLUSAGE_POSITIONT = 9;
inline constexpr BYTE D3DDECLUSAGE_COLOR = 10;
inline constexpr BYTE D3DDECLUSAGE_FOG = 11;

/// One record of a vertex declaration, 8 bytes as object files store it.
struct D3DVERTEXELEMENT9 {
    uint16_t Stream;
    uint16_t Offset;
    BYTE Type;
    BYTE Method;
    BYTE Usage;
    BYTE UsageIndex;
};
static_assert(sizeof(D3DVERTEXELEMENT9) == 8);
/// The end marker of a declaration: stream 0xFF.
inline constexpr D3DVERTEXELEMENT9 D3DDECL_END = {0xFF, 0, D3DDECLTYPE_UNUSED, 0, 0, 0};

struct D3DSURFACE_DESC {
    D3DFORMAT Format = D3DFMT_UNKNOWN;
    D3DRESOURCETYPE Type = D3DRTYPE_SURFACE;
    DWORD Usage = 0;
    D3DPOOL Pool = D3DPOOL_DEFAULT;
    DWORD MultiSampleType = 0;
    DWORD MultiSampleQuality = 0;
    UINT Width = 0;
    UINT Height = 0;
};

struct D3DLOCKED_RECT {
    int32_t Pitch = 0;
    void* pBits = nullptr;
};

struct D3DVIEWPORT9 {
    DWORD X = 0;
    DWORD Y = 0;
    DWORD Width = 0;
    DWORD Height = 0;
    float MinZ = 0.0f;
    float MaxZ = 1.0f;
};

struct D3DPRESENT_PARAMETERS {
    UINT BackBufferWidth = 0;
    UINT BackBufferHeight = 0;
    D3DFORMAT BackBufferFormat = D3DFMT_UNKNOWN;
    UINT BackBufferCount = 0;
    DWORD MultiSampleType = 0;
    DWORD MultiSampleQuality = 0;
    DWORD SwapEffect = 0;
    void* hDeviceWindow = nullptr;
    int32_t Windowed = 1;
    int32_t EnableAutoDepthStencil = 0;
    D3DFORMAT AutoDepthStencilFormat = D3DFMT_UNKNOWN;
    DWORD Flags = 0;
    UINT FullScreen_RefreshRateInHz = 0;
    UINT PresentationInterval = 0;
};

/// The capabilities the engine reads at start.
struct D3DCAPS9 {
    DWORD TextureCaps = 0;
    DWORD VertexShaderVersion = 0;
    DWORD PixelShaderVersion = 0;
    DWORD MaxTextureWidth = 0;
    DWORD MaxTextureHeight = 0;
    DWORD MaxStreams = 0;
};
inline constexpr DWORD D3DPTEXTURECAPS_POW2 = 0x2;
inline constexpr DWORD D3DPTEXTURECAPS_NONPOW2CONDITIONAL = 0x100;

using D3DQUERYTYPE = DWORD;
inline constexpr D3DQUERYTYPE D3DQUERYTYPE_EVENT = 8;
inline constexpr D3DQUERYTYPE D3DQUERYTYPE_OCCLUSION = 9;
inline constexpr DWORD D3DISSUE_END = 1;
inline constexpr DWORD D3DISSUE_BEGIN = 2;
inline constexpr DWORD D3DGETDATA_FLUSH = 1;

inline constexpr HRESULT D3D_OK = S_OK;
inline constexpr HRESULT D3DERR_INVALIDCALL = HRESULT(0x8876086Cu);
inline constexpr HRESULT D3DERR_NOTAVAILABLE = HRESULT(0x8876086Au);
inline constexpr HRESULT D3DERR_DEVICELOST = HRESULT(0x88760868u);
inline constexpr HRESULT D3DERR_DEVICENOTRESET = HRESULT(0x88760869u);
inline constexpr HRESULT D3DERR_OUTOFVIDEOMEMORY = HRESULT(0x8876017Cu);

// D3DX: image file formats and image information.
using D3DXIMAGE_FILEFORMAT = DWORD;
inline constexpr D3DXIMAGE_FILEFORMAT D3DXIFF_BMP = 0;
inline constexpr D3DXIMAGE_FILEFORMAT D3DXIFF_JPG = 1;
inline constexpr D3DXIMAGE_FILEFORMAT D3DXIFF_TGA = 2;
inline constexpr D3DXIMAGE_FILEFORMAT D3DXIFF_PNG = 3;
inline constexpr D3DXIMAGE_FILEFORMAT D3DXIFF_DDS = 4;

struct D3DXIMAGE_INFO {
    UINT Width = 0;
    UINT Height = 0;
    UINT Depth = 0;
    UINT MipLevels = 0;
    D3DFORMAT Format = D3DFMT_UNKNOWN;
    D3DRESOURCETYPE ResourceType = D3DRTYPE_TEXTURE;
    D3DXIMAGE_FILEFORMAT ImageFileFormat = D3DXIFF_BMP;
};

inline constexpr UINT D3DX_DEFAULT = UINT(-1);
inline constexpr DWORD D3DXFX_DONOTSAVESTATE = 0x4;
inline constexpr DWORD D3DXSHADER_USE_LEGACY_D3DX9_31_DLL = 0x10000;

}  // namespace qx::gpu
