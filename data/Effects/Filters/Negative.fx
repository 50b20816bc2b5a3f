// Image filter "Negative": the picture in sampler 0, each colour turned to its opposite.
// The quad comes in pixels (pre-transformed), so there is no vertex stage.

#include "Filters\Filter.fxh"

sampler g_Picture : register(s0);

float4 ps_main(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    return float4(1.0 - tex2D(g_Picture, uv).rgb, 1.0);
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
