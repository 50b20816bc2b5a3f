// The shadow map of a light: each mesh drawn from the light, writing the depth of its
// pixels in the light's projection into a one-channel float target. The light's
// view-projection stands in constants 0 to 3, the mesh's world matrix in 4 to 6.

float4x4 g_LightViewProj : register(c0);
float4x3 g_ShadowModel : register(c4);

struct VS_OUTPUT
{
    float4 Pos : POSITION;
    float Depth : TEXCOORD0;
};

VS_OUTPUT vs_main(float3 pos : POSITION0)
{
    VS_OUTPUT OUT;
    float3 worldPos = mul(float4(pos, 1.0), g_ShadowModel);
    OUT.Pos = mul(float4(worldPos, 1.0), g_LightViewProj);
    OUT.Depth = OUT.Pos.z / OUT.Pos.w;
    return OUT;
}

float4 ps_main(float depth : TEXCOORD0) : COLOR0
{
    return float4(depth, depth, depth, 1.0);
}

technique t0
{
    pass p0
    {
        CullMode = NONE;
        VertexShader = compile vs_2_0 vs_main();
        PixelShader = compile ps_2_0 ps_main();
    }
    pass restore
    {
        CullMode = CCW;
    }
}
