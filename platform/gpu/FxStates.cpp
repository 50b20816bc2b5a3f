#include "platform/gpu/FxStates.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdlib>

namespace qx::gpu {

namespace {

enum class ValueKind { Number, Bool, Blend, Cull, Compare, BlendOp, Filter, Address, Float };

struct StateName {
    const char* name;
    bool sampler;
    DWORD state;
    ValueKind kind;
};

constexpr StateName kStates[] = {
    {"ZENABLE", false, D3DRS_ZENABLE, ValueKind::Bool},
    {"ZWRITEENABLE", false, D3DRS_ZWRITEENABLE, ValueKind::Bool},
    {"ALPHATESTENABLE", false, D3DRS_ALPHATESTENABLE, ValueKind::Bool},
    {"SRCBLEND", false, D3DRS_SRCBLEND, ValueKind::Blend},
    {"DESTBLEND", false, D3DRS_DESTBLEND, ValueKind::Blend},
    {"CULLMODE", false, D3DRS_CULLMODE, ValueKind::Cull},
    {"ZFUNC", false, D3DRS_ZFUNC, ValueKind::Compare},
    {"ALPHAREF", false, D3DRS_ALPHAREF, ValueKind::Number},
    {"ALPHAFUNC", false, D3DRS_ALPHAFUNC, ValueKind::Compare},
    {"ALPHABLENDENABLE", false, D3DRS_ALPHABLENDENABLE, ValueKind::Bool},
    {"FOGENABLE", false, D3DRS_FOGENABLE, ValueKind::Bool},
    {"FOGCOLOR", false, D3DRS_FOGCOLOR, ValueKind::Number},
    {"POINTSIZE", false, D3DRS_POINTSIZE, ValueKind::Float},
    {"COLORWRITEENABLE", false, D3DRS_COLORWRITEENABLE, ValueKind::Number},
    {"BLENDOP", false, D3DRS_BLENDOP, ValueKind::BlendOp},
    {"ADDRESSU", true, D3DSAMP_ADDRESSU, ValueKind::Address},
    {"ADDRESSV", true, D3DSAMP_ADDRESSV, ValueKind::Address},
    {"MAGFILTER", true, D3DSAMP_MAGFILTER, ValueKind::Filter},
    {"MINFILTER", true, D3DSAMP_MINFILTER, ValueKind::Filter},
    {"MIPFILTER", true, D3DSAMP_MIPFILTER, ValueKind::Filter},
};

// Value names by kind; a name's number is its place in the list plus the first number.
struct ValueNames {
    ValueKind kind;
    DWORD first;
    std::vector<const char*> names;
};

const std::vector<ValueNames>& valueNames()
{
    static const std::vector<ValueNames> kNames = {
        {ValueKind::Bool, 0, {"FALSE", "TRUE"}},
        {ValueKind::Blend,
         1,
         {"ZERO", "ONE", "SRCCOLOR", "INVSRCCOLOR", "SRCALPHA", "INVSRCALPHA", "DESTALPHA", "INVDESTALPHA", "DESTCOLOR",
          "INVDESTCOLOR", "SRCALPHASAT"}},
        {ValueKind::Cull, 1, {"NONE", "CW", "CCW"}},
        {ValueKind::Compare,
         1,
         {"NEVER", "LESS", "EQUAL", "LESSEQUAL", "GREATER", "NOTEQUAL", "GREATEREQUAL", "ALWAYS"}},
        {ValueKind::BlendOp, 1, {"ADD", "SUBTRACT", "REVSUBTRACT", "MIN", "MAX"}},
        {ValueKind::Filter, 0, {"NONE", "POINT", "LINEAR", "ANISOTROPIC"}},
        {ValueKind::Address, 1, {"WRAP", "MIRROR", "CLAMP", "BORDER", "MIRRORONCE"}},
    };
    return kNames;
}

std::string upper(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::toupper(c)); });
    return text;
}

bool readNamedValue(ValueKind kind, const std::string& text, DWORD& value)
{
    for (const ValueNames& names : valueNames()) {
        if (names.kind != kind) continue;
        for (size_t i = 0; i < names.names.size(); ++i) {
            if (text == names.names[i]) {
                value = names.first + DWORD(i);
                return true;
            }
        }
    }
    return false;
}

// Integers in decimal or hex; floats (for POINTSIZE) as their bits. A leading '-' token
// is part of the value.
bool readNumber(const std::vector<std::string>& tokens, bool asFloat, DWORD& value)
{
    std::string text;
    for (const std::string& token : tokens) text += token;
    if (text.empty()) return false;
    char* end = nullptr;
    if (asFloat || text.find('.') != std::string::npos) {
        const float number = std::strtof(text.c_str(), &end);
        // An integer written with a fraction keeps its whole part; one beyond any integer
        // (or infinite, or not a number) has none, and is no value.
        constexpr float kBeyondIntegers = 9.2e18f;
        if (!asFloat && !(std::fabs(number) < kBeyondIntegers)) return false;
        value = asFloat ? std::bit_cast<DWORD>(number) : DWORD(int64_t(number));
    } else {
        value = DWORD(std::strtoll(text.c_str(), &end, 0));
    }
    return end != text.c_str();
}

}  // namespace

bool readStateAssignment(const std::string& name, DWORD index, const std::vector<std::string>& value,
                         StateAssignment& out)
{
    const std::string key = upper(name);
    const auto found =
        std::find_if(std::begin(kStates), std::end(kStates), [&](const StateName& state) { return key == state.name; });
    if (found == std::end(kStates) || value.empty()) return false;
    out = StateAssignment{found->sampler, index, found->state, 0};
    if (value.size() == 1 && readNamedValue(found->kind, upper(value[0]), out.value)) return true;
    return readNumber(value, found->kind == ValueKind::Float, out.value);
}

}  // namespace qx::gpu
