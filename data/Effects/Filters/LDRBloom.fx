// Image filter "LDRBloom": bright areas glow. Pass 3 keeps the bright parts of the picture,
// pass 1 brings a level down to half its size, pass 2 blurs with five taps whose offsets
// stand in constants 0 to 4 (x, y), and pass 0 adds the four blurred levels, in samplers 1
// to 4, to the picture in sampler 0. Pass 4 puts the states back. The quads come in
// pixels, each the size of its target.

#include "Filters\Filter.fxh"

sampler g_Picture : register(s0);
sampler g_Level1 : register(s1);
sampler g_Level2 : register(s2);
sampler g_Level3 : register(s3);
sampler g_Level4 : register(s4);
float4 g_Taps[5] : register(c0);

float4 ps_final(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    float3 glow = tex2D(g_Level1, uv).rgb * 0.3 + tex2D(g_Level2, uv).rgb * 0.3
                + tex2D(g_Level3, uv).rgb * 0.25 + tex2D(g_Level4, uv).rgb * 0.2;
    return float4(tex2D(g_Picture, uv).rgb + glow, 1.0);
}

float4 ps_downsample(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    return tex2D(g_Picture, uv);
}

float4 ps_blur(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    float3 sum = tex2D(g_Picture, uv + g_Taps[0].xy).rgb * 0.0625
               + tex2D(g_Picture, uv + g_Taps[1].xy).rgb * 0.25
               + tex2D(g_Picture, uv + g_Taps[2].xy).rgb * 0.375
               + tex2D(g_Picture, uv + g_Taps[3].xy).rgb * 0.25
               + tex2D(g_Picture, uv + g_Taps[4].xy).rgb * 0.0625;
    return float4(sum, 1.0);
}

float4 ps_bright(float2 uv : TEXCOORD0) : COLOR0
{
    uv = TexelCentre(uv);
    float3 colour = tex2D(g_Picture, uv).rgb;
    float luminance = dot(colour, float3(0.299, 0.587, 0.114));
    return float4(colour * saturate((luminance - 0.55) * 2.2), 1.0);
}

technique t0
{
    pass final
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
        AddressU[2] = CLAMP;
        AddressV[2] = CLAMP;
        AddressU[3] = CLAMP;
        AddressV[3] = CLAMP;
        AddressU[4] = CLAMP;
        AddressV[4] = CLAMP;
        PixelShader = compile ps_2_0 ps_final();
    }
    pass downsample
    {
        ZEnable = FALSE;
        ZWriteEnable = FALSE;
        CullMode = NONE;
        AlphaBlendEnable = FALSE;
        AlphaTestEnable = FALSE;
        AddressU[0] = CLAMP;
        AddressV[0] = CLAMP;
        PixelShader = compile ps_2_0 ps_downsample();
    }
    pass blur
    {
        ZEnable = FALSE;
        ZWriteEnable = FALSE;
        CullMode = NONE;
        AlphaBlendEnable = FALSE;
        AlphaTestEnable = FALSE;
        AddressU[0] = CLAMP;
        AddressV[0] = CLAMP;
        PixelShader = compile ps_2_0 ps_blur();
    }
    pass bright
    {
        ZEnable = FALSE;
        ZWriteEnable = FALSE;
        CullMode = NONE;
        AlphaBlendEnable = FALSE;
        AlphaTestEnable = FALSE;
        AddressU[0] = CLAMP;
        AddressV[0] = CLAMP;
        PixelShader = compile ps_2_0 ps_bright();
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
        AddressU[2] = WRAP;
        AddressV[2] = WRAP;
        AddressU[3] = WRAP;
        AddressV[3] = WRAP;
        AddressU[4] = WRAP;
        AddressV[4] = WRAP;
    }
}
