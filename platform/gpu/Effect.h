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
#include <string>
#include <vector>

namespace qx::gpu {

struct CompiledPass {
    FxPass pass;
    std::shared_ptr<PassShaders> shaders;
};

struct CompiledEffect {
    std::vector<std::vector<CompiledPass>> techniques;
};

class Effect {
public:
    Effect(std::shared_ptr<Device> device, std::shared_ptr<const CompiledEffect> compiled)
        : device_(std::move(device)), compiled_(std::move(compiled)) {}

    HRESULT Begin(UINT* passes, DWORD flags);
    HRESULT BeginPass(UINT pass);
    HRESULT EndPass();
    HRESULT End();
    HRESULT CommitChanges() { return inPass_ ? D3D_OK : D3DERR_INVALIDCALL; }

private:
    const std::vector<CompiledPass>& technique() const { return compiled_->techniques.front(); }

    std::shared_ptr<Device> device_;
    std::shared_ptr<const CompiledEffect> compiled_;
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
