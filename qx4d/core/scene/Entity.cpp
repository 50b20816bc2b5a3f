#include "qx4d/core/scene/Entity.h"

#include "qx4d/core/TextReader.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace qx4d {

namespace {

/// Below this a component counts as zero: of an aim, of a scale.
constexpr float kTiny = 1e-5f;
/// Straight up and straight down, as the aim writes them.
const float kMinusHalfPi = std::bit_cast<float>(0xBFC90FDBu);
const float kHalfPi = std::bit_cast<float>(0x3FC90FDBu);

bool IsTiny(const Float3& v) { return std::fabs(v[0]) < kTiny && std::fabs(v[1]) < kTiny && std::fabs(v[2]) < kTiny; }

Float3 Normalized(const Float3& v)
{
    const float length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
    return {v[0] / length, v[1] / length, v[2] / length};
}

/// acos of a dot product of unit vectors. Rounding can take the product a hair past 1,
/// where acos has no value; the angle there is 0 (or pi), never NaN.
float AngleOf(float cosine) { return std::acos(std::clamp(cosine, -1.0f, 1.0f)); }

}  // namespace

void Entity::Update(float time, float /*timeStep*/)
{
    for (const auto& envelope : envelopes) envelope->Update(time);
    UpdateTransform();
}

void Entity::AimAtTarget()
{
    Float3 t = Translation(target->matrix);
    if (parent) t = TransformPoint(Inverse(parent->matrix), t);
    const bool hAim = HController() == kAim;
    const bool pAim = PController() == kAim;
    if (hAim) rotation[0] = 0.0f;
    if (pAim) rotation[1] = 0.0f;
    Float3 d{t[0] - position[0], t[1] - position[1], t[2] - position[2]};
    if (IsTiny(d)) return;
    d = Normalized(d);
    Float3 f{d[0], 0.0f, d[2]};
    if (IsTiny(f)) {
        // Straight up or down: no heading can be told.
        if (pAim) rotation[1] = d[1] >= 0.0f ? kMinusHalfPi : kHalfPi;
        return;
    }
    f = Normalized(f);
    if (hAim) {
        rotation[0] = AngleOf(f[2]);
        if (f[0] < 0.0f) rotation[0] = -rotation[0];
    }
    if (pAim) {
        rotation[1] = AngleOf(d[0] * f[0] + d[1] * f[1] + d[2] * f[2]);
        if (d[1] > 0.0f) rotation[1] = -rotation[1];
    }
}

void Entity::UpdateTransform()
{
    if (target) AimAtTarget();
    Matrix3x4 m = RotationHPB(rotation[0], rotation[1], rotation[2]);
    // A zero scale would make the matrix singular: the field itself becomes +1e-5.
    for (float& component : scale)
        if (std::fabs(component) < kTiny) component = kTiny;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) m[r * 4 + c] *= scale[size_t(c)];
        m[r * 4 + 3] = position[size_t(r)] - (m[r * 4] * pivot[0] + m[r * 4 + 1] * pivot[1] + m[r * 4 + 2] * pivot[2]);
    }
    matrix = parent ? Multiply(parent->matrix, m) : m;
}

void Entity::ReadChannel(float& field, TextReader& reader)
{
    auto envelope = std::make_unique<Envelope>(&field);
    if (envelope->Load(reader)) envelopes.push_back(std::move(envelope));
}

bool Entity::ReadKey(const String& key, TextReader& reader)
{
    const auto readFloat3 = [&](Float3& out) {
        for (float& value : out) value = ReadFloat(reader);
    };
    // Out-of-range controller values aren't masked: their bits spill into the next field.
    const auto setController = [&](uint32_t shift) {
        const auto value = uint32_t(ReadInt(reader));
        controllers = (controllers & ~(7u << shift)) | (value << shift);
    };
    struct Channel {
        std::u16string_view key;
        float* field;
    };
    const Channel channels[] = {
        {u"PositionX", &position[0]}, {u"PositionY", &position[1]}, {u"PositionZ", &position[2]},
        {u"RotationH", &rotation[0]}, {u"RotationP", &rotation[1]}, {u"RotationB", &rotation[2]},
        {u"ScaleX", &scale[0]},       {u"ScaleY", &scale[1]},       {u"ScaleZ", &scale[2]},
    };
    if (key == u"Name") {
        reader.ReadValue(name);
    } else if (key == u"ID") {
        id = reader.NextToken(true) ? reader.ToInt() : 0;
    } else if (key == u"ParentID") {
        parentId = ReadInt(reader);
    } else if (key == u"TargetID") {
        targetId = ReadInt(reader);
        controllers = 9;  // H and P aim at the target, B doesn't
    } else if (key == u"Position") {
        readFloat3(position);
    } else if (key == u"Rotation") {
        readFloat3(rotation);
    } else if (key == u"Scale") {
        readFloat3(scale);
    } else if (key == u"Pivot") {
        readFloat3(pivot);
    } else if (key == u"HController") {
        setController(0);
    } else if (key == u"PController") {
        setController(3);
    } else if (key == u"BController") {
        setController(6);
    } else if (key == u"//") {
        reader.SkipLine();
    } else if (key == u"/*") {
        while (reader.NextToken(true) && *static_cast<String*>(&reader) != u"*/") {}
    } else {
        for (const Channel& channel : channels) {
            if (key == channel.key) {
                ReadChannel(*channel.field, reader);
                return true;
            }
        }
        return false;
    }
    return true;
}

bool Entity::Read(TextReader& reader, Scene& scene)
{
    String key;
    while (reader.NextToken(key, true) && key != u"}") {
        bool refuse = false;
        if (!ReadKey(key, reader)) ReadOwnKey(key, reader, scene, refuse);
        if (refuse) return false;
        reader.SkipLine();
    }
    return true;
}

}  // namespace qx4d
