// Image filter "Wave": the picture in sampler 0 read with its coordinates moved along
// rings around the centre, a ripple that fades out at the radius. Constant 0 holds the
// centre x and y and the radius, in texture coordinates.

#include "Filters\Filter.fxh"

sampler g_Picture : register(s0);
float4 g_Wave : register(c0);

float4 ps_main(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    float2 offset = uv - g_Wave.xy;
    float distance = length(offset);
    float strength = saturate(1.0 - distance / max(g_Wave.z, 0.0001));
    float2 along = offset / max(distance, 0.0001);
    float2 moved = uv + along * sin(distance * 60.0) * 0.015 * strength;
    return float4(tex2D(g_Picture, moved).rgb, 1.0);
}

technique t0
{
    pass p0
    {
        ZEnable = FALSE;
        ZWriteEnable = FALSE;
        CullMode = NONE;
        AlphaBlendEnable = FALSE;
        AlphaTestEnable = FALSE;
        AddressU[0] = CLAMP;
        AddressV[0] = CLAMP;
        PixelShader = compile ps_2_0 ps_main();
    }
    pass restore
    {
        ZEnable = TRUE;
        ZWriteEnable = TRUE;
        CullMode = CCW;
        AddressU[0] = WRAP;
        AddressV[0] = WRAP;
    }
}
