// Image filter "Explode": the picture in sampler 0 read with its coordinates moved away
// from the centre, most near the centre and not at all from the radius on, so that the
// middle of the picture draws together into a burst. Constant 0 holds the centre x and y
// and the radius, in texture coordinates.

#include "Filters\Filter.fxh"

sampler g_Picture : register(s0);
float4 g_Burst : register(c0);

float4 ps_main(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    float2 offset = uv - g_Burst.xy;
    float strength = saturate(1.0 - length(offset) / max(g_Burst.z, 0.0001));
    return float4(tex2D(g_Picture, g_Burst.xy + offset * (1.0 + 1.5 * strength * strength)).rgb, 1.0);
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
