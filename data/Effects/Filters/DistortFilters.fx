// Image filter "Twirl": the picture in sampler 0 read with its coordinates turned around
// the centre, by the whole angle at the centre and by nothing at the radius. Constant 0
// holds the centre x and y and the radius, in texture coordinates (0 to 1 across the
// frame), and the angle in radians.

#include "Filters\Filter.fxh"

sampler g_Picture : register(s0);
float4 g_Twirl : register(c0);

float4 ps_main(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    float2 offset = uv - g_Twirl.xy;
    float distance = length(offset);
    float strength = saturate(1.0 - distance / max(g_Twirl.z, 0.0001));
    float turn = g_Twirl.w * strength * strength;
    float s = sin(turn);
    float c = cos(turn);
    float2 turned = float2(offset.x * c - offset.y * s, offset.x * s + offset.y * c);
    return float4(tex2D(g_Picture, g_Twirl.xy + turned).rgb, 1.0);
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
