#include "apps/session/EffectSession.h"

#include "platform/os/WideText.h"
#include "wrap3d/DataPath.h"

#include <algorithm>

#include <cstdio>

namespace qx::qxfx {

namespace {

// The code, with what it means for the failures a user meets: the external filter names a
// class that nothing registered, memory, a bad value.
std::string hresultText(HRESULT hr)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", unsigned(hr));
    const char* meaning = hr == REGDB_E_CLASSNOTREG ? "class not registered"
                          : hr == E_OUTOFMEMORY     ? "out of memory"
                          : hr == E_INVALIDARG      ? "invalid argument"
                                                    : nullptr;
    return meaning ? std::string(text) + ", " + meaning : std::string(text);
}

std::string effectName(LONG id) { return "effect " + std::to_string(id); }

// The host keeps paths in fields of a fixed size, terminator included; a longer path is
// refused here rather than cut there.
std::u16string limitedText(const std::string& text, size_t fieldSize, const char* what)
{
    auto wide = os::fromUtf8(text);
    if (wide.size() >= fieldSize) {
        throw CommandError(std::string(what) + " longer than " + std::to_string(fieldSize - 1) + " characters");
    }
    return wide;
}

}  // namespace

std::optional<std::string> defaultParamsText(LONG effectId)
{
    const auto host = CQXDynamicEffect::Create();
    LONG index = -1;
    if (host->GetIndexFromID(effectId, &index) != S_OK) return std::nullopt;
    LONG values[kMaxParams] = {};
    LONG count = 0;
    host->GetEffectDefaults(index, values, &count);
    return os::toUtf8(formatParams(std::span(values, size_t(std::clamp<LONG>(count, 0, kMaxParams)))));
}

EffectSession::EffectSession(const EffectSettings& settings, int width, int height)
    : effectId_(settings.effectId), input_(makeFrame(width, height)), output_(makeFrame(width, height)),
      inputSurface_(transform::DXSurface::wrap(input_.samples, width, height)),
      outputSurface_(transform::DXSurface::wrap(output_.samples, width, height)), host_(CQXDynamicEffect::Create())
{
    if (!inputSurface_ || !outputSurface_) throw CommandError("out of memory");
    select(settings);
    const std::shared_ptr<transform::DXSurface> inputs[] = {inputSurface_};
    if (const HRESULT hr = host_->Setup(inputs, outputSurface_, 0); FAILED(hr)) {
        throw CommandError("Setup of " + effectName(effectId_) + " failed (" + hresultText(hr) + ")");
    }
}

void EffectSession::select(const EffectSettings& settings)
{
    if (host_->put_Index(settings.effectId) != S_OK) {
        throw CommandError("unknown effect id " + std::to_string(settings.effectId) + " (see 'qxfx list')");
    }
    // As an editor does: the data path first, since the first scene client starts the
    // scene context, which mounts the content found there once and for all.
    if (!settings.dataPath.empty()) {
        Bstr dataPath(limitedText(settings.dataPath, kMaxDataPath, "data path"));
        host_->SetGlobalDataPath(dataPath.get());
    }
    const std::string params = settings.params ? *settings.params : defaultParamsText(settings.effectId).value_or("");
    Bstr paramsText(os::fromUtf8(params));
    if (const HRESULT hr = host_->put_Params(paramsText.get()); FAILED(hr)) {
        throw CommandError("parameters '" + params + "' refused by " + effectName(effectId_) +
                           " (at most 16 values, each followed by ';')");
    }
    Bstr source(limitedText(settings.source, CQXDynamicEffect::kMaxSource, "source path"));
    host_->put_Source(source.get());
    if (settings.durationSeconds > 0.0) host_->put_Duration(settings.durationSeconds);
    host_->put_Fps(settings.fps);
    host_->put_AspectRatio(settings.aspectRatio);
}

HRESULT EffectSession::execute(float progress)
{
    host_->put_Progress(std::clamp(progress, 0.0f, 1.0f));
    return host_->Execute(nullptr, nullptr, nullptr);
}

void EffectSession::checkExecuted(HRESULT hr) const
{
    if (FAILED(hr)) throw CommandError("Execute of " + effectName(effectId_) + " failed (" + hresultText(hr) + ")");
}

void EffectSession::process(float progress) { checkExecuted(execute(progress)); }

void EffectSession::processBetween(std::span<const uint32_t> in, std::span<uint32_t> out, float progress)
{
    if (in.size() != input_.samples.size() || out.size() != output_.samples.size()) {
        throw CommandError("frames of another size than the " + std::to_string(input_.width) + "x" +
                           std::to_string(input_.height) + " the effect was set up for");
    }
    // The host holds its surfaces from Setup on, as an editor's do; the caller's samples
    // are put under them for this Execute, and the session's own frames go back after.
    // The input is only ever locked for reading.
    inputSurface_->rewrap({const_cast<uint32_t*>(in.data()), in.size()});
    outputSurface_->rewrap(out);
    const HRESULT hr = execute(progress);
    inputSurface_->rewrap(input_.samples);
    outputSurface_->rewrap(output_.samples);
    checkExecuted(hr);
}

bool EffectSession::processInPlace(Frame& frame, float progress)
{
    // Every frame path that a Setup leaves writes the whole output, so the session's
    // output frame holds nothing that a later frame needs: it goes out with the result,
    // and the frame that came in takes its place.
    processBetween(frame.samples, output_.samples, progress);
    const bool changed = output_.samples != frame.samples;
    std::swap(frame.samples, output_.samples);
    outputSurface_->rewrap(output_.samples);
    return changed;
}

}  // namespace qx::qxfx
