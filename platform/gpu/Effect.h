#pragma once
// The effect of D3DX: technique and pass blocks over HLSL. Begin takes the first
// technique; BeginPass sets the pass's states and shaders on the device. Constants go to
// the device directly (SetVertexShaderConstantF / SetPixelShaderConstantF), so
// CommitChanges has nothing left to send. Compiled effects are cached by text on the
// device: identical texts compile once.
#include "platform/gpu/Device.h"
#include "platform/gpu/EffectIncludes.h"
#include "platform/gpu/FxParser.h"

#include <memory>
#include <span>
#include <string>
#include <vector>

namespace qx::gpu {

struct CompiledPass {
    FxPass pass;
    std::shared_ptr<PassShaders> shaders;
};

struct CompiledEffect {
    std::vector<std::vector<CompiledPass>> techniques;
    FxBindings bindings;
};

class Effect {
public:
    Effect(std::shared_ptr<Device> device, std::shared_ptr<const CompiledEffect> compiled);

    HRESULT Begin(UINT* passes, DWORD flags);
    HRESULT BeginPass(UINT pass);
    HRESULT EndPass();
    HRESULT End();
    /// Sends the values and textures of the parameters set by name since the pass began.
    HRESULT CommitChanges();

    // Parameters that the text binds to no register, set by name as with D3DX. Values are
    // kept and reach the device when a pass begins and at CommitChanges.
    /// Copies up to the parameter's size of `values`, four floats a register, as the
    /// registers hold them. D3DERR_INVALIDCALL for a name the effect doesn't have.
    HRESULT SetValue(const std::string& name, std::span<const float> values);
    /// A D3DX matrix (row-major 4x4, for row vectors) into a matrix parameter, each
    /// register taking a column (or a row when the text says `row_major`).
    HRESULT SetMatrix(const std::string& name, const float (&matrix)[16]);
    /// The texture of every sampler whose `sampler_state` names this texture parameter.
    HRESULT SetTexture(const std::string& name, std::shared_ptr<Texture> texture);

private:
    const std::vector<CompiledPass>& technique() const { return compiled_->techniques.front(); }
    void applyParameters() const;

    std::shared_ptr<Device> device_;
    std::shared_ptr<const CompiledEffect> compiled_;
    // One value array a parameter of the bindings, and the textures by parameter name.
    std::vector<std::vector<float>> values_;
    std::vector<std::pair<std::string, std::shared_ptr<Texture>>> textures_;
    bool begun_ = false;
    bool inPass_ = false;
};

/// D3DXCreateEffect: compiles the text, its includes resolved by `resolver`. Fails
/// quietly (D3DERR_INVALIDCALL, null effect) when the text does not compile.
HRESULT D3DXCreateEffect(const std::shared_ptr<Device>& device, const std::string& text,
                         const IncludeResolver& resolver, std::shared_ptr<Effect>* effect);

/// D3DXGetPixelShaderProfile: the highest pixel shader profile of the device.
const char* D3DXGetPixelShaderProfile(const Device& device);

}  // namespace qx::gpu
