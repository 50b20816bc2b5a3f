// The test of a lens flare's light against the depth of the frame: a small quad at the
// light's place, in pixels, drawn with the depth test on and no colour written, while an
// occlusion query counts the pixels that pass.

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
        CullMode = NONE;
        ColorWriteEnable = 0;
        PixelShader = compile ps_2_0 ps_main();
    }
    pass restore
    {
        ZWriteEnable = TRUE;
        CullMode = CCW;
        ColorWriteEnable = 15;
    }
}
