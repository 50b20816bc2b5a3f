#include "plugins/frei0r/Frei0rFilter.h"

#include <cstring>

namespace qx::frei0r {

Frei0rFilter::Frei0rFilter(const PluginKind& kind, int width, int height) : kind_(kind), width_(width), height_(height)
{
    for (const auto& param : kind.params) {
        values_.texts.emplace_back(param.defaultText);
        values_.numbers.push_back(param.defaultNumber);
    }
}

bool Frei0rFilter::isText(int index) const { return kind_.params[size_t(index)].type == F0R_PARAM_STRING; }

// Progress and the time unit are read at every frame; everything else at Setup.
bool Frei0rFilter::reachesSetup(int index) const
{
    return index != kind_.progressIndex && index != kind_.millisecondsIndex;
}

void Frei0rFilter::setNumber(int index, double value)
{
    std::lock_guard guard(lock_);
    if (isText(index) || values_.numbers[size_t(index)] == value) return;
    values_.numbers[size_t(index)] = value;
    changed_ = changed_ || reachesSetup(index);
}

void Frei0rFilter::setText(int index, const char* text)
{
    std::lock_guard guard(lock_);
    const std::string value = text ? text : "";
    if (!isText(index) || values_.texts[size_t(index)] == value) return;
    values_.texts[size_t(index)] = value;
    changed_ = true;
}

void Frei0rFilter::getValue(int index, void* param)
{
    std::lock_guard guard(lock_);
    if (isText(index)) {
        *static_cast<const char**>(param) = values_.texts[size_t(index)].c_str();
    } else {
        *static_cast<double*>(param) = values_.numbers[size_t(index)];
    }
}

// Sets the effect up again; an effect that cannot be set up leaves no session, and is not
// tried again until a parameter changes.
void Frei0rFilter::setUp()
{
    changed_ = false;
    session_.reset();
    try {
        if (const auto settings = kind_.settings(values_)) {
            session_ = std::make_unique<qxfx::EffectSession>(*settings, width_, height_);
        }
    } catch (const std::exception&) {
        session_.reset();
    }
}

void Frei0rFilter::update(double time, const uint32_t* in, uint32_t* out)
{
    std::lock_guard guard(lock_);
    if (changed_) setUp();
    const size_t samples = size_t(width_) * size_t(height_);
    if (session_) {
        try {
            const double* numbers = values_.numbers.data();
            const double seconds = clock_.seconds(time, numbers[kind_.millisecondsIndex] >= 0.5);
            // The host's frames themselves, read and written where they are.
            session_->processBetween({in, samples}, {out, samples},
                                     progressOver(seconds, spanOfValues(values_, kind_), numbers[kind_.progressIndex]));
            return;
        } catch (const std::exception&) {}
    }
    if (out != in) std::memmove(out, in, samples * sizeof(uint32_t));
}

}  // namespace qx::frei0r
