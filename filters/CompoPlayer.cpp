#include "filters/CompoPlayer.h"

#include "filters/CompoReader.h"
#include "platform/os/CRuntime.h"
#include "platform/os/FilePath.h"
#include "platform/os/WideText.h"
#include "qx4d/content/HarmonicOscillator.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

namespace qx3d {
namespace {

// Counts read from files go no further than this, whatever the file claims; the reading
// also ends with the text.
constexpr int32_t kMaxCount = 1 << 20;

std::mutex handlerLock;
CompoPlayer::MessageHandler& messageHandler()
{
    static CompoPlayer::MessageHandler handler;
    return handler;
}

void ShowMessage(std::u16string_view text)
{
    CompoPlayer::MessageHandler handler;
    {
        std::lock_guard guard(handlerLock);
        handler = messageHandler();
    }
    if (handler) {
        handler(text);
    } else {
        std::fprintf(stderr, "%s\n", qx::os::toUtf8(text).c_str());
    }
}

std::optional<qx::CompoReader> OpenFile(std::u16string_view path)
{
    return qx::CompoReader::open(qx::os::findPath(path));
}

/// Puts `key` among `keys` by time; a key at a time that is there already takes its place.
void PlaceKey(std::vector<qx4d::Key>& keys, const qx4d::Key& key)
{
    const auto at = std::ranges::lower_bound(keys, key.time, {}, &qx4d::Key::time);
    if (at != keys.end() && at->time == key.time) {
        *at = key;
    } else {
        keys.insert(at, key);
    }
}

/// The modifier of an envelope after its "{": an oscillator by its nine numbers, of which
/// the first and the last are not used; then the closing brackets of both.
void ReadModifier(qx::CompoReader& reader, qx4d::Envelope& envelope)
{
    reader.Token(true);
    if (reader.QuotedString() == u"LW_Oscillator") {
        float f[9];
        for (float& value : f) value = reader.Float();
        auto oscillator = std::make_unique<qx4d::HarmonicOscillator>();
        oscillator->start = f[6];
        oscillator->end = f[7];
        oscillator->frequency = f[1];
        oscillator->amplitude = f[2];
        oscillator->offset = f[5];
        oscillator->phase = f[3];
        oscillator->damping = f[4];
        envelope.AddModifier(std::move(oscillator));
    }
    reader.Token(true);
    reader.Token(true);
}

/// One channel's envelope as it stands after "(envelope)", driving `target`.
std::unique_ptr<qx4d::Envelope> ReadEnvelope(qx::CompoReader& reader, float* target)
{
    reader.Token(true);  // the opening bracket
    reader.Token(true);  // the channel's name
    const int32_t count = std::clamp(reader.Integer(), 0, kMaxCount);
    std::vector<qx4d::Key> keys;
    for (int32_t i = 0; i < count && !reader.AtEnd(); ++i) {
        reader.Token(true);
        qx4d::Key key;
        key.value = reader.Float();
        key.time = reader.Float();
        key.shape = uint32_t(reader.Integer());
        for (float& param : key.params) param = reader.Float();
        PlaceKey(keys, key);
    }
    auto envelope = std::make_unique<qx4d::Envelope>(target);
    for (const qx4d::Key& key : keys) {
        qx4d::Key& added = envelope->AddKey(key.value, key.time, key.shape);
        std::ranges::copy(key.params, added.params);
    }
    reader.Token(true);
    envelope->SetPreBehavior(reader.Integer());
    envelope->SetPostBehavior(reader.Integer());
    const std::u16string_view next = reader.Token(true);
    if (next == u"{") {
        ReadModifier(reader, *envelope);
    } else if (next == u"\\") {
        // A modifier of a kind this player has no handler for.
        ShowMessage(u"Oscillator Handler needed.");
        reader.SkipLine();
        reader.Token(true);
    }
    return envelope;
}

/// A channel of `targets.size()` floats: numbers, or "(envelope)" and one envelope each.
void ReadChannel(qx::CompoReader& reader, std::initializer_list<float*> targets, CompoPlayer::Entity& entity)
{
    const std::u16string_view first = reader.Token(true);
    if (first == u"(envelope)") {
        for (float* target : targets) entity.envelopes.push_back(ReadEnvelope(reader, target));
        return;
    }
    bool firstValue = true;
    for (float* target : targets) {
        *target = firstValue ? float(qx::os::_wtof(first)) : reader.Float();
        firstValue = false;
    }
}

std::vector<qx::draw2d::PointF> ReadPoints(qx::CompoReader& reader)
{
    reader.Token(true);
    const int32_t count = std::clamp(reader.Integer(), 0, kMaxCount);
    std::vector<qx::draw2d::PointF> points;
    for (int32_t i = 0; i < count && !reader.AtEnd(); ++i) {
        const float x = reader.Float();
        points.push_back({x, reader.Float()});
    }
    reader.Token(true);
    return points;
}

}  // namespace

void CompoPlayer::SetMessageHandler(MessageHandler handler)
{
    std::lock_guard guard(handlerLock);
    messageHandler() = std::move(handler);
}

CompoPlayer::~CompoPlayer()
{
    while (!entities.empty()) entities.pop_back();
}

int CompoPlayer::Init(int32_t count, const std::u16string* images, int32_t frameWidth, int32_t frameHeight,
                      float frameAspect, int32_t stretchMode)
{
    if (count <= 0 || !userImages.empty() || !images) return 0;
    width = frameWidth;
    height = frameHeight;
    aspect = frameAspect;
    stretch = stretchMode;
    userImages.assign(images, images + count);
    return 1;
}

int CompoPlayer::Load(std::u16string_view path)
{
    std::optional<qx::CompoReader> reader = OpenFile(path);
    if (!reader) return 0;
    Read(*reader);
    return 1;
}

void CompoPlayer::Read(qx::CompoReader& reader)
{
    nextImage = 0;
    while (!reader.AtEnd()) {
        const std::u16string_view key = reader.Token(true);
        if (key == u"Duration") {
            duration = reader.Float();
        } else if (key == u"Shape") {
            ReadEntity(reader, Kind::Shape);
        } else if (key == u"Image") {
            ReadEntity(reader, Kind::Image);
        } else if (key == u"Prop") {
            ReadEntity(reader, Kind::Prop);
        } else if (key == u"Null") {
            ReadEntity(reader, Kind::Null);
        }
        reader.SkipLine();
    }
    ResolveParents();
}

void CompoPlayer::ReadEntity(qx::CompoReader& reader, Kind kind)
{
    std::unique_ptr<Entity> entity;
    Image* image = nullptr;
    if (kind == Kind::Shape) {
        entity = std::make_unique<Shape>();
    } else if (kind == Kind::Null) {
        entity = std::make_unique<Entity>();
    } else {
        auto picture = std::make_unique<Image>();
        image = picture.get();
        entity = std::move(picture);
    }
    if (kind == Kind::Image && !userImages.empty()) {
        const std::u16string& picture = userImages[size_t(nextImage) % userImages.size()];
        ++nextImage;
        image->LoadPicture(picture, width, height);
    }
    reader.SkipLine();
    for (;;) {
        const std::u16string_view key = reader.Token(true);
        if (key.empty() || key == u"}") break;
        ReadKey(reader, key, kind, *entity);
        reader.SkipLine();
    }
    if (kind == Kind::Image) {
        entity->aspect = aspect;
        entity->stretch = stretch;
    }
    entities.push_back(std::move(entity));
}

void CompoPlayer::ReadKey(qx::CompoReader& reader, std::u16string_view key, Kind kind, Entity& entity)
{
    const bool hasArea = kind != Kind::Null;
    const bool hasPicture = kind == Kind::Image || kind == Kind::Prop;
    if (key == u"Parent") {
        std::u16string parentName = reader.QuotedString();
        if (kind != Kind::Shape) {
            entity.parentName = std::move(parentName);
            return;
        }
        // An outline's parent is looked up at once among the entities read so far.
        const auto found = std::ranges::find(entities, parentName, &Entity::name);
        entity.parent = found == entities.end() ? nullptr : found->get();
    } else if (key == u"Name") {
        entity.name = reader.QuotedString();
    } else if (key == u"FileName" && hasPicture) {
        // No limits: a picture named in the file keeps its size.
        static_cast<Image&>(entity).LoadPicture(reader.QuotedString(), INT32_MAX, INT32_MAX);
    } else if (key == u"Size" && hasArea) {
        entity.size.X = reader.Float();
        entity.size.Y = reader.Float();
    } else if (key == u"Position") {
        ReadChannel(reader, {&entity.position.X, &entity.position.Y}, entity);
    } else if (key == u"Rotation") {
        ReadChannel(reader, {&entity.rotation}, entity);
    } else if (key == u"Scale") {
        ReadChannel(reader, {&entity.scale.X, &entity.scale.Y}, entity);
    } else if (key == u"Pivot") {
        ReadChannel(reader, {&entity.pivot.X, &entity.pivot.Y}, entity);
    } else if (key == u"Transparency" && hasArea) {
        ReadChannel(reader, {&entity.transparency}, entity);
    } else if (key == u"Points" && kind == Kind::Shape) {
        static_cast<Shape&>(entity).path = ReadPoints(reader);
    }
}

// Names are matched in file order, the first match winning. An outline has no parent
// name: it takes the first entity without a name, or keeps the parent it found while
// being read. Any entity without a parent name does the same, since an empty name
// matches it.
void CompoPlayer::ResolveParents()
{
    for (const std::unique_ptr<Entity>& child : entities) {
        const auto found = std::ranges::find(entities, child->parentName, &Entity::name);
        if (found != entities.end()) child->parent = found->get();
    }
}

void CompoPlayer::Render(float progress, qx::draw2d::Graphics& graphics)
{
    const float time = float(double(progress) * double(duration));
    for (const std::unique_ptr<Entity>& entity : entities) {
        for (auto envelope = entity->envelopes.rbegin(); envelope != entity->envelopes.rend(); ++envelope) {
            (*envelope)->Update(time);
        }
        entity->UpdateMatrix();
    }
    qx::draw2d::Matrix frame;
    frame = qx::draw2d::Matrix::product({1, 0, 0, 1, width * 0.5, height * 0.5}, frame);
    frame = qx::draw2d::Matrix::product({width / 4.0, 0, 0, height / 3.0, 0, 0}, frame);
    const qx::draw2d::Matrix saved = graphics.transform();
    graphics.SetTransform(frame);
    for (const std::unique_ptr<Entity>& entity : entities) entity->Draw(graphics);
    graphics.SetTransform(saved);
}

int32_t CompoPlayer::GetImagesCount(std::u16string_view path)
{
    std::optional<qx::CompoReader> reader = OpenFile(path);
    if (!reader) return -1;
    int32_t count = 0;
    while (!reader->AtEnd()) {
        if (reader->Token(true) == u"Image") ++count;
        reader->SkipLine();
    }
    return count;
}

float CompoPlayer::GetDuration(std::u16string_view path)
{
    std::optional<qx::CompoReader> reader = OpenFile(path);
    if (!reader) return -1.0f;
    while (!reader->AtEnd()) {
        if (reader->Token(true) == u"Duration") return reader->Float();
        reader->SkipLine();
    }
    return -1.0f;
}

}  // namespace qx3d
