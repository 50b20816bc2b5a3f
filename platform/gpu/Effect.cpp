#include "platform/gpu/Effect.h"

#include <algorithm>
#include <map>

namespace qx::gpu {

namespace {

using StageMemo = std::map<std::pair<std::string, StageKind>, std::optional<CompiledStage>>;

// A stage compiled once per entry point, however many passes name it.
const std::optional<CompiledStage>& compileOnce(StageMemo& memo, const std::string& hlsl, StageKind kind,
                                                const std::string& entry)
{
    const auto key = std::make_pair(entry, kind);
    auto found = memo.find(key);
    if (found == memo.end()) found = memo.emplace(key, compileStage(hlsl, kind, entry)).first;
    return found->second;
}

std::shared_ptr<const CompiledEffect> compileEffect(const std::shared_ptr<Context>& context, const std::string& text)
{
    FxText parsed;
    if (!parseEffectText(text, parsed) || parsed.techniques.empty() || parsed.techniques.front().passes.empty())
        return nullptr;
    auto compiled = std::make_shared<CompiledEffect>();
    compiled->bindings = parsed.bindings;
    StageMemo memo;
    for (const FxTechnique& technique : parsed.techniques) {
        std::vector<CompiledPass> passes;
        for (const FxPass& pass : technique.passes) {
            std::optional<CompiledStage> vertex, pixel;
            if (!pass.vertexEntry.empty() &&
                !(vertex = compileOnce(memo, parsed.hlsl, StageKind::Vertex, pass.vertexEntry)))
                return nullptr;
            if (!pass.pixelEntry.empty() &&
                !(pixel = compileOnce(memo, parsed.hlsl, StageKind::Pixel, pass.pixelEntry)))
                return nullptr;
            passes.push_back({pass, std::make_shared<PassShaders>(context, std::move(vertex), std::move(pixel))});
        }
        compiled->techniques.push_back(std::move(passes));
    }
    return compiled;
}

}  // namespace

HRESULT D3DXCreateEffect(const std::shared_ptr<Device>& device, const std::string& text,
                         const IncludeResolver& resolver, std::shared_ptr<Effect>* effect)
{
    if (!device || !effect) return D3DERR_INVALIDCALL;
    *effect = nullptr;
    std::string expanded;
    if (!expandIncludes(text, resolver, expanded)) return D3DERR_INVALIDCALL;
    auto& cache = device->effectCache();
    auto found = cache.find(expanded);
    if (found == cache.end()) found = cache.emplace(expanded, compileEffect(device->context(), expanded)).first;
    if (!found->second) return D3DERR_INVALIDCALL;
    *effect = std::make_shared<Effect>(device, found->second);
    return D3D_OK;
}

const char* D3DXGetPixelShaderProfile(const Device& device)
{
    (void)device;
    return "ps_3_0";
}

Effect::Effect(std::shared_ptr<Device> device, std::shared_ptr<const CompiledEffect> compiled)
    : device_(std::move(device)), compiled_(std::move(compiled))
{
    for (const FxParameter& parameter : compiled_->bindings.parameters) values_.push_back(parameter.defaults);
}

HRESULT Effect::Begin(UINT* passes, DWORD flags)
{
    // D3DXFX_DONOTSAVESTATE or not: the states a pass sets stay set after End.
    (void)flags;
    if (begun_) return D3DERR_INVALIDCALL;
    begun_ = true;
    if (passes) *passes = UINT(technique().size());
    return D3D_OK;
}

HRESULT Effect::BeginPass(UINT pass)
{
    if (!begun_ || inPass_ || pass >= technique().size()) return D3DERR_INVALIDCALL;
    const CompiledPass& compiled = technique()[pass];
    // The states of the samplers' own blocks first: a pass may set them again.
    for (const FxSampler& sampler : compiled_->bindings.samplers)
        for (const StateAssignment& state : sampler.states)
            device_->SetSamplerState(state.index, state.state, state.value);
    for (const StateAssignment& state : compiled.pass.states) {
        if (state.sampler)
            device_->SetSamplerState(state.index, state.state, state.value);
        else
            device_->SetRenderState(state.state, state.value);
    }
    device_->SetPassShaders(compiled.shaders);
    applyParameters();
    inPass_ = true;
    return D3D_OK;
}

HRESULT Effect::CommitChanges()
{
    if (!inPass_) return D3DERR_INVALIDCALL;
    applyParameters();
    return D3D_OK;
}

void Effect::applyParameters() const
{
    const std::vector<FxParameter>& parameters = compiled_->bindings.parameters;
    // Both stages hold a parameter at the same registers, above every register the text
    // binds itself.
    for (size_t i = 0; i < parameters.size(); ++i) {
        const UINT count = UINT(values_[i].size() / 4);
        device_->SetVertexShaderConstantF(parameters[i].firstRegister, values_[i].data(), count);
        device_->SetPixelShaderConstantF(parameters[i].firstRegister, values_[i].data(), count);
    }
    for (const auto& [name, texture] : textures_)
        for (const FxSampler& sampler : compiled_->bindings.samplers)
            if (sampler.texture == name) device_->SetTexture(sampler.stage, texture);
}

HRESULT Effect::SetValue(const std::string& name, std::span<const float> values)
{
    const std::vector<FxParameter>& parameters = compiled_->bindings.parameters;
    for (size_t i = 0; i < parameters.size(); ++i) {
        if (parameters[i].name != name) continue;
        std::copy_n(values.begin(), std::min(values.size(), values_[i].size()), values_[i].begin());
        return D3D_OK;
    }
    return D3DERR_INVALIDCALL;
}

HRESULT Effect::SetMatrix(const std::string& name, const float (&matrix)[16])
{
    for (const FxParameter& parameter : compiled_->bindings.parameters) {
        if (parameter.name != name) continue;
        float registers[16];
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                registers[r * 4 + c] = parameter.columnMajor ? matrix[c * 4 + r] : matrix[r * 4 + c];
        return SetValue(name, registers);
    }
    return D3DERR_INVALIDCALL;
}

HRESULT Effect::SetTexture(const std::string& name, std::shared_ptr<Texture> texture)
{
    const auto& samplers = compiled_->bindings.samplers;
    if (std::none_of(samplers.begin(), samplers.end(), [&](const FxSampler& s) { return s.texture == name; }))
        return D3DERR_INVALIDCALL;
    for (auto& [bound, value] : textures_) {
        if (bound == name) {
            value = std::move(texture);
            return D3D_OK;
        }
    }
    textures_.emplace_back(name, std::move(texture));
    return D3D_OK;
}

HRESULT Effect::EndPass()
{
    if (!inPass_) return D3DERR_INVALIDCALL;
    inPass_ = false;
    return D3D_OK;
}

HRESULT Effect::End()
{
    if (!begun_) return D3DERR_INVALIDCALL;
    begun_ = false;
    inPass_ = false;
    return D3D_OK;
}

}  // namespace qx::gpu
