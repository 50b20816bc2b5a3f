#include "plugins/frei0r/Frei0rFilter.h"

#include <charconv>
#include <cstring>

namespace qx::frei0r {

std::string* Frei0rFilter::stringParam(int index)
{
    switch (index) {
    case kEffect: return &effect_;
    case kParams: return &params_;
    case kSource: return &source_;
    case kDataPath: return &dataPath_;
    default: return nullptr;
    }
}

double* Frei0rFilter::doubleParam(int index)
{
    switch (index) {
    case kProgress: return &progress_;
    case kDuration: return &duration_;
    case kMilliseconds: return &milliseconds_;
    default: return nullptr;
    }
}

void Frei0rFilter::setDouble(int index, double value)
{
    std::lock_guard guard(lock_);
    double* field = doubleParam(index);
    if (!field || *field == value) return;
    *field = value;
    // The span reaches the effect at Setup; progress and the time unit are read per frame.
    if (index == kDuration) changed_ = true;
}

void Frei0rFilter::setString(int index, const char* text)
{
    std::lock_guard guard(lock_);
    std::string* field = stringParam(index);
    const std::string value = text ? text : "";
    if (!field || *field == value) return;
    *field = value;
    changed_ = true;
}

void Frei0rFilter::getValue(int index, void* param)
{
    std::lock_guard guard(lock_);
    if (const std::string* text = stringParam(index)) {
        *static_cast<const char**>(param) = text->c_str();
    } else if (const double* value = doubleParam(index)) {
        *static_cast<double*>(param) = *value;
    }
}

// Sets the effect up again; an effect that cannot be set up leaves no session, and is not
// tried again until a parameter changes.
void Frei0rFilter::setUp()
{
    changed_ = false;
    session_.reset();
    qxfx::EffectSettings settings;
    const auto [end, ec] = std::from_chars(effect_.data(), effect_.data() + effect_.size(), settings.effectId);
    if (ec != std::errc() || end != effect_.data() + effect_.size()) return;
    if (!params_.empty()) settings.params = params_;
    settings.source = source_;
    settings.dataPath = dataPath_;
    settings.durationSeconds = std::clamp(duration_, 0.0, 1.0) * kDurationScale;
    try {
        session_ = std::make_unique<qxfx::EffectSession>(settings, width_, height_);
    } catch (const std::exception&) {
        session_.reset();
    }
}

void Frei0rFilter::update(double time, const uint32_t* in, uint32_t* out)
{
    std::lock_guard guard(lock_);
    if (changed_) setUp();
    const size_t bytes = size_t(width_) * size_t(height_) * sizeof(uint32_t);
    if (session_) {
        std::memcpy(session_->input().samples.data(), in, bytes);
        try {
            session_->process(progressAt(time, milliseconds_ >= 0.5, duration_, progress_));
            std::memcpy(out, session_->output().samples.data(), bytes);
            return;
        } catch (const std::exception&) {
        }
    }
    if (out != in) std::memmove(out, in, bytes);
}

}  // namespace qx::frei0r
