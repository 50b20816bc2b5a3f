// The backdrop picture, drawn first over the whole target. Its vertices come
// pre-transformed in pixels, so they skip the vertex stage; the pixel stage shows the
// picture tinted by the vertex colour, with no depth and no culling.

sampler g_Backdrop : register(s0);

float4 ps_main(float4 color : COLOR0, float2 uv : TEXCOORD0) : COLOR0
{
    return tex2D(g_Backdrop, uv) * color;
}

technique t0
{
    pass p0
    {
        ZEnable = FALSE;
        ZWriteEnable = FALSE;
        CullMode = NONE;
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
