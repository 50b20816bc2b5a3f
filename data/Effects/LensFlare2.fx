// The elements of lens flares: quads in pixels with the origin at the lower left, which
// constants 0 to 3 turn into clip space; each vertex carries its texture coordinates and
// the element's colour, already faded by how much of the light is seen. The elements add
// their light over the whole frame, with no depth test.

float4x4 g_PixelsToClip : register(c0);
sampler g_Element : register(s0);

struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float2 TexCoord : TEXCOORD0;
    float3 Color : TEXCOORD1;
};

VS_OUTPUT vs_main(float3 pos : POSITION0, float2 uv : TEXCOORD0, float3 color : TEXCOORD1)
{
    VS_OUTPUT OUT;
    OUT.Pos = mul(float4(pos, 1.0), g_PixelsToClip);
    OUT.TexCoord = uv;
    OUT.Color = color;
    return OUT;
}

float4 ps_main(float2 uv : TEXCOORD0, float3 color : TEXCOORD1) : COLOR0
{
    return float4(tex2D(g_Element, uv).rgb * color, 1.0);
}

technique t0
{
    pass p0
    {
        ZEnable = FALSE;
        ZWriteEnable = FALSE;
        CullMode = NONE;
        AlphaTestEnable = FALSE;
        AlphaBlendEnable = TRUE;
        SrcBlend = ONE;
        DestBlend = ONE;
        AddressU[0] = CLAMP;
        AddressV[0] = CLAMP;
        VertexShader = compile vs_2_0 vs_main();
        PixelShader = compile ps_2_0 ps_main();
    }
    pass restore
    {
        ZEnable = TRUE;
        ZWriteEnable = TRUE;
        CullMode = CCW;
        AlphaBlendEnable = FALSE;
        SrcBlend = ONE;
        DestBlend = ZERO;
        AddressU[0] = WRAP;
        AddressV[0] = WRAP;
    }
}
