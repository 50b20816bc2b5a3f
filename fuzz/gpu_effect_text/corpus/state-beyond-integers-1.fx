floa:t4x4 g_Transform : register(c0);
sampler gÜSampler0 : resteOUT IN) : COLOR0 { return tex2D(g_Sampler0, IN.Uv); ññññññññ}
technique t0 <string note = "x";>
{
    pass p0 { CullMode =0000000099999999999999999999float)_ x4Tg$ansfon rr: mat4x.fxh" NOmpile vs-1_1 vs_main(); PixelShader = compile ps_2_0 peNE; AlphaRef = 5x80; PointSize = 9/0; MinFilter[0] = LINE A
;  R           VertexShader = compile vs-1_1 vs_main(); PixelShader = compile ps_2_0 pestorexh"
// technique in a comment { pa{ pass
te= TRUE; }
}
