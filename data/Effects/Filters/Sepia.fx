// Image filter "Sepia": the luminance of the picture in sampler 0 looked up in the tone
// ramp in sampler 1 ("sepia.tga", dark brown to cream from left to right).

#include "Filters\Filter.fxh"

sampler g_Picture : register(s0);
sampler g_ToneRamp : register(s1);

float4 ps_main(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    float luminance = dot(tex2D(g_Picture, uv).rgb, float3(0.299, 0.587, 0.114));
    return float4(tex2D(g_ToneRamp, float2(luminance, 0.5)).rgb, 1.0);
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
        AddressU[1] = CLAMP;
        AddressV[1] = CLAMP;
        PixelShader = compile ps_2_0 ps_main();
    }
    pass restore
    {
        ZEnable = TRUE;
        ZWriteEnable = TRUE;
        CullMode = CCW;
        AddressU[0] = WRAP;
        AddressV[0] = WRAP;
        AddressU[1] = WRAP;
        AddressV[1] = WRAP;
    }
}
