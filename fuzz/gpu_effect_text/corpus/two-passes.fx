float4x4 g_Transform : register(c0);
sampler g_Sampler0 : register(s0);
struct VS_OUT { float4 Pos : POSITION; float2 Uv : TEXCOORD0; };
VS_OUT vs_main(float3 pos : POSITION, float2 uv : TEXCOORD0) { VS_OUT o; o.Pos = mul(float4(pos, 1), g_Transform); o.Uv = uv; return o; }
float4 ps_main(VS_OUT IN) : COLOR0 { return tex2D(g_Sampler0, IN.Uv); }
technique t0 <string note = "x";>
{
    pass p0 { CullMode = NONE; AlphaRef = 0x80; PointSize = 9.0; MinFilter[0] = LINEAR;
              VertexShader = compile vs_1_1 vs_main(); PixelShader = compile ps_2_0 ps_main(); }
    pass restore { CullMode = CCW; /* comment { */ ZEnable = TRUE; }
}
