// What every image filter shares. Direct3D 9 samples a pixel at its top-left corner, half
// a texel off the texel it covers, which would blur each pass and shift it by half a
// pixel; the texture coordinates' own steps across the pixel bring the sample back to the
// texel's centre.

float2 TexelCentre(float2 uv)
{
    return uv + 0.5 * float2(abs(ddx(uv.x)), abs(ddy(uv.y)));
}
