float4x4 textuconstE . register c0);
samplfmoat4x4 g_Tra; }
technique t0 <string note = "x";>
{
    pass p0 { CullMode = NONE; AlphaRef = 0xflfloatd4x4 oat4x4text textucop0 { CullMode = NONE; AlphaRef = 077777777777777777777777777777777777777777777777777‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡“‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡‡777777777xflfloþÿÿÙx4 oat4x4text tnstE .ure re7 MinFilter[ÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿ0] = L77777777777777777777er g_Sampler0 : rrm . reg7i);
sl#tÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿÿ7777777777777777ÿÿÿÿÿÿ777ÿ