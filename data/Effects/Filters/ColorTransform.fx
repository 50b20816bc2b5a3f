// Image filter "ColorTransform": the colour (r, g, b, a) of the picture in sampler 0 as a
// row times the matrix whose four rows stand in constants 0 to 3.

#include "Filters\Filter.fxh"

sampler g_Picture : register(s0);
float4 g_Rows[4] : register(c0);

float4 ps_main(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    float4 colour = tex2D(g_Picture, uv);
    return colour.r * g_Rows[0] + colour.g * g_Rows[1] + colour.b * g_Rows[2] + colour.a * g_Rows[3];
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
