// The test of a lens flare's light against the depth of the frame: one point of a few
// pixels at the light's world position, which constants 0 to 3 (the camera's
// view-projection) place, drawn with the depth test on and no colour written, while an
// occlusion query counts the pixels that pass.

float4x4 g_ViewProj : register(c0);

struct VS_OUTPUT
{
    float4 Pos : POSITION;
};

VS_OUTPUT vs_main(float3 pos : POSITION0)
{
    VS_OUTPUT OUT;
    OUT.Pos = mul(float4(pos, 1.0), g_ViewProj);
    return OUT;
}

float4 ps_main() : COLOR0
{
    return float4(1.0, 1.0, 1.0, 1.0);
}

technique t0
{
    pass p0
    {
        ZEnable = TRUE;
        ZWriteEnable = FALSE;
        ZFunc = LESSEQUAL;
        CullMode = NONE;
        AlphaBlendEnable = FALSE;
        AlphaTestEnable = FALSE;
        ColorWriteEnable = 0;
        VertexShader = compile vs_2_0 vs_main();
        PixelShader = compile ps_2_0 ps_main();
    }
    pass restore
    {
        ZWriteEnable = TRUE;
        CullMode = CCW;
        ColorWriteEnable = 15;
        PointSize = 1.0;
    }
}
