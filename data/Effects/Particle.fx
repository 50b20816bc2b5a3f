// Particles: camera-facing quads already placed in the world, each vertex with its
// texture coordinates and colour. The texture in sampler 0 is tinted by the colour. The
// emitter sets blending, alpha test and depth states by its draw style before its quads
// are drawn; the last pass puts them back. The view-projection of the camera stands in
// constants 0 to 3.

float4x4 g_ViewProj : register(c0);
sampler g_Particle : register(s0);

struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float2 TexCoord : TEXCOORD0;
    float4 Color : COLOR0;
};

VS_OUTPUT vs_main(float3 pos : POSITION0, float2 uv : TEXCOORD0, float4 color : COLOR0)
{
    VS_OUTPUT OUT;
    OUT.Pos = mul(float4(pos, 1.0), g_ViewProj);
    OUT.TexCoord = uv;
    OUT.Color = color;
    return OUT;
}

float4 ps_main(float2 uv : TEXCOORD0, float4 color : COLOR0) : COLOR0
{
    return tex2D(g_Particle, uv) * color;
}

technique t0
{
    pass p0
    {
        CullMode = NONE;
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
        AlphaTestEnable = FALSE;
        AlphaFunc = ALWAYS;
        AlphaRef = 0;
        AddressU[0] = WRAP;
        AddressV[0] = WRAP;
    }
}
