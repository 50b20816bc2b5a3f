// Shared head of every effect text the engine generates for a mesh: the light records
// with their register rows, the fog factor and the lighting functions the generated
// vertex and pixel shaders call.
//
// Register rows, each one float4, in the order the engine writes them:
//   distant light: direction (w unused), colour (w range) [, specular (w glossiness)]
//   point light:   position (w unused),  colour (w range) [, specular (w glossiness)]
//   spot light:    position (w cos of the inner cone), direction (w cos of the cone),
//                  colour (w range) [, specular (w glossiness)]
// The colour rows already hold the material's diffuse and specular amounts.

#define FOG_LINEAR 1
#define FOG_EXP 2
#define FOG_EXP_2 3

// Point and spot lights are at full strength within their range and fall off as the
// inverse of the distance to this power beyond it.
#define FALL_OFF 2.0

// The normal map lookup names its sampler g_pSampler; it is the material's g_Sampler.
#define g_pSampler0 g_Sampler0
#define g_pSampler1 g_Sampler1
#define g_pSampler2 g_Sampler2
#define g_pSampler3 g_Sampler3
#define g_pSampler4 g_Sampler4
#define g_pSampler5 g_Sampler5
#define g_pSampler6 g_Sampler6
#define g_pSampler7 g_Sampler7
#define g_pSampler8 g_Sampler8
#define g_pSampler9 g_Sampler9
#define g_pSampler10 g_Sampler10
#define g_pSampler11 g_Sampler11
#define g_pSampler12 g_Sampler12
#define g_pSampler13 g_Sampler13
#define g_pSampler14 g_Sampler14
#define g_pSampler15 g_Sampler15

// The normal map lookup adds a texture offset; outside GetLighting and ps_main, which
// have their own, it is none.
static const float2 offset = float2(0.0, 0.0);

// Weight of the second position stream when two are tweened. Only a material with the
// tween flag reads it, and nothing in the engine sets that flag: meshes with two position
// streams add them. So no code writes this register for meshes; the shadow pass and the
// lens flares use c0 for their own matrices.
float g_TweenFactor : register(c0);

struct DistantLight
{
    float3 Direction;
    float Unused;
    float3 Diffuse;
    float Range;
};

struct DistantLightSpec
{
    float3 Direction;
    float Unused;
    float3 Diffuse;
    float Range;
    float3 Specular;
    float Glossiness;
};

struct PointLight
{
    float3 Position;
    float Unused;
    float3 Diffuse;
    float Range;
};

struct PointLightSpec
{
    float3 Position;
    float Unused;
    float3 Diffuse;
    float Range;
    float3 Specular;
    float Glossiness;
};

struct SpotLight
{
    float3 Position;
    float CosInner;
    float3 Direction;
    float CosOuter;
    float3 Diffuse;
    float Range;
};

struct SpotLightSpec
{
    float3 Position;
    float CosInner;
    float3 Direction;
    float CosOuter;
    float3 Diffuse;
    float Range;
    float3 Specular;
    float Glossiness;
};

// The fog factor of the fixed-function fog: 1 leaves the colour, 0 is all fog colour.
// Linear fog is scale * distance + offset; the exponential modes take scale as density.
float DoFog(float eyeDistance, float scale, float offset, int mode)
{
    if (mode == FOG_LINEAR)
        return saturate(eyeDistance * scale + offset);
    float density = eyeDistance * scale;
    if (mode == FOG_EXP)
        return exp(-density);
    return exp(-density * density);
}

// Lambert diffuse toward `toLight` (a unit vector), scaled by `strength`.
void AddDiffuse(float3 normal, float3 toLight, float3 colour, float strength, inout float3 diffuse)
{
    diffuse += colour * (saturate(dot(normal, toLight)) * strength);
}

// Blinn specular with the half vector of the light and the view, scaled by `strength`;
// nothing where the surface faces away from the light.
void AddSpecular(float3 normal, float3 toLight, float3 viewDir, float3 colour, float glossiness, float strength,
                 inout float3 specular)
{
    float3 halfway = normalize(toLight + viewDir);
    float facing = dot(normal, toLight) > 0.0 ? 1.0 : 0.0;
    specular += colour * (pow(saturate(dot(normal, halfway)), max(glossiness, 1.0)) * facing * strength);
}

// Full strength within `range`, then (range / distance) to the power `fallOff`.
float Attenuation(float lightDistance, float range, float fallOff)
{
    return pow(saturate(range / max(lightDistance, 0.0001)), fallOff);
}

// 1 inside the inner cone, 0 outside the cone; the soft edge between them is smooth,
// a hard edge cuts at the cone.
float SpotCone(float3 toLight, float3 direction, float cosInner, float cosOuter, bool softEdge)
{
    float cosAngle = dot(-toLight, normalize(direction));
    if (softEdge)
        return smoothstep(cosOuter, cosInner, cosAngle);
    return cosAngle >= cosOuter ? 1.0 : 0.0;
}

void DoDistantLight(float3 normal, DistantLight light, inout float3 diffuse)
{
    AddDiffuse(normal, -normalize(light.Direction), light.Diffuse, 1.0, diffuse);
}

void DoDistantLightSpec(float3 normal, float3 viewDir, DistantLightSpec light, inout float3 diffuse,
                        inout float3 specular)
{
    float3 toLight = -normalize(light.Direction);
    AddDiffuse(normal, toLight, light.Diffuse, 1.0, diffuse);
    AddSpecular(normal, toLight, viewDir, light.Specular, light.Glossiness, 1.0, specular);
}

void DoPointLight(float3 normal, float3 position, PointLight light, inout float3 diffuse, float fallOff)
{
    float3 toLight = light.Position - position;
    float lightDistance = length(toLight);
    AddDiffuse(normal, toLight / max(lightDistance, 0.0001), light.Diffuse,
               Attenuation(lightDistance, light.Range, fallOff), diffuse);
}

void DoPointLightSpec(float3 normal, float3 position, float3 viewDir, PointLightSpec light, inout float3 diffuse,
                      inout float3 specular, float fallOff)
{
    float3 toLight = light.Position - position;
    float lightDistance = length(toLight);
    toLight /= max(lightDistance, 0.0001);
    float strength = Attenuation(lightDistance, light.Range, fallOff);
    AddDiffuse(normal, toLight, light.Diffuse, strength, diffuse);
    AddSpecular(normal, toLight, viewDir, light.Specular, light.Glossiness, strength, specular);
}

void DoSpotLight(float3 normal, float3 position, SpotLight light, inout float3 diffuse, float fallOff,
                 bool softEdge)
{
    float3 toLight = light.Position - position;
    float lightDistance = length(toLight);
    toLight /= max(lightDistance, 0.0001);
    float strength = Attenuation(lightDistance, light.Range, fallOff)
                   * SpotCone(toLight, light.Direction, light.CosInner, light.CosOuter, softEdge);
    AddDiffuse(normal, toLight, light.Diffuse, strength, diffuse);
}

void DoSpotLightSpec(float3 normal, float3 position, float3 viewDir, SpotLightSpec light, inout float3 diffuse,
                     inout float3 specular, float fallOff, bool softEdge)
{
    float3 toLight = light.Position - position;
    float lightDistance = length(toLight);
    toLight /= max(lightDistance, 0.0001);
    float strength = Attenuation(lightDistance, light.Range, fallOff)
                   * SpotCone(toLight, light.Direction, light.CosInner, light.CosOuter, softEdge);
    AddDiffuse(normal, toLight, light.Diffuse, strength, diffuse);
    AddSpecular(normal, toLight, viewDir, light.Specular, light.Glossiness, strength, specular);
}
