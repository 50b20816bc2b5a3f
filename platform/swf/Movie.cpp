#include "platform/swf/Movie.h"

#include "platform/pixel/Alpha.h"
#include "platform/swf/BitmapCache.h"
#include "platform/swf/ByteReader.h"
#include "platform/swf/Painter.h"
#include "platform/swf/ShapeParser.h"

#include "platform/swf/FileBytes.h"

namespace qx::swf {

namespace {

// Decoded bitmaps kept between frames.
constexpr size_t kBitmapBudget = size_t(256) << 20;

bool isBitmapTag(uint16_t code)
{
    return code == kDefineBits || code == kDefineBitsJpeg2 || code == kDefineBitsJpeg3 || code == kDefineBitsJpeg4 ||
           code == kDefineBitsLossless || code == kDefineBitsLossless2;
}

int shapeVersion(uint16_t code)
{
    switch (code) {
    case kDefineShape: return 1;
    case kDefineShape2: return 2;
    case kDefineShape3: return 3;
    case kDefineShape4: return 4;
    default: return 0;
    }
}

std::optional<SpriteCharacter> parseSprite(std::span<const uint8_t> body, uint16_t& id)
{
    ByteReader reader(body);
    id = reader.u16();
    reader.u16();  // frame count, not trusted: the sprite's ShowFrame tags count
    if (reader.failed()) return std::nullopt;
    const auto tags = splitTags(reader.rest());
    return SpriteCharacter{Timeline(collectFrames(tags))};
}

// The stage in twips to the target in pixels.
Matrix stageToTarget(const Rect& stage, int width, int height, ScaleMode mode)
{
    const double stageWidth = double(stage.width());
    const double stageHeight = double(stage.height());
    if (stageWidth <= 0.0 || stageHeight <= 0.0) return {1 / kTwipsPerPixel, 0, 0, 1 / kTwipsPerPixel, 0, 0};
    double sx = width / stageWidth;
    double sy = height / stageHeight;
    double left = 0.0;
    double top = 0.0;
    if (mode == ScaleMode::ShowAll) {
        sx = sy = std::min(sx, sy);
        left = (width - stageWidth * sx) / 2.0;
        top = (height - stageHeight * sy) / 2.0;
    }
    return {sx, 0, 0, sy, left - stage.xMin * sx, top - stage.yMin * sy};
}

}  // namespace

Movie::Movie()
    : dictionary_(std::make_unique<Dictionary>()), timeline_(std::make_unique<Timeline>()),
      bitmaps_(std::make_unique<BitmapCache>(kBitmapBudget))
{}

Movie::~Movie() = default;

std::unique_ptr<Movie> Movie::load(std::span<const uint8_t> file)
{
    auto body = readSwf(file);
    if (!body) return nullptr;
    std::unique_ptr<Movie> movie(new Movie());
    movie->header_ = body->header;
    movie->bytes_ = std::move(body->bytes);
    movie->readTags(std::span<const uint8_t>(movie->bytes_).subspan(body->tagsOffset));
    return movie;
}

std::unique_ptr<Movie> Movie::loadFile(const std::string& path)
{
    const auto file = readWholeFile(path);
    return file ? load(*file) : nullptr;
}

void Movie::readTags(std::span<const uint8_t> stream)
{
    const auto tags = splitTags(stream);
    std::span<const uint8_t> jpegTables;
    bool backgroundSet = false;
    for (size_t i = 0; i < tags.size(); ++i) {
        const Tag& tag = tags[i];
        if (const int version = shapeVersion(tag.code)) {
            if (auto parsed = parseShape(tag.body, version)) {
                auto outlines = buildOutlines(parsed->shape);
                dictionary_->define(parsed->id, i, ShapeCharacter{std::move(parsed->shape), std::move(outlines)});
            }
        } else if (tag.code == kDefineMorphShape || tag.code == kDefineMorphShape2) {
            if (auto morph = parseMorphShape(tag.body, tag.code == kDefineMorphShape ? 1 : 2)) {
                const uint16_t id = morph->id;
                dictionary_->define(id, i, MorphCharacter{std::move(*morph)});
            }
        } else if (tag.code == kJpegTables) {
            jpegTables = tag.body;
        } else if (isBitmapTag(tag.code)) {
            const BitmapSource source{tag.code, tag.body,
                                      tag.code == kDefineBits ? jpegTables : std::span<const uint8_t>()};
            dictionary_->define(bitmapId(tag.body), i, BitmapCharacter{source});
        } else if (tag.code == kDefineSprite) {
            uint16_t id = 0;
            if (auto sprite = parseSprite(tag.body, id)) dictionary_->define(id, i, std::move(*sprite));
        } else if (tag.code == kSetBackgroundColor && !backgroundSet) {
            ByteReader reader(tag.body);
            const Rgba color = reader.rgb();
            if (!reader.failed()) {
                background_ = color;
                backgroundSet = true;
            }
        }
    }
    *timeline_ = Timeline(collectFrames(tags));
}

size_t Movie::frameCount() const { return timeline_->frameCount(); }

bool Movie::render(size_t tick, draw2d::Bitmap& target, const RenderOptions& options) const
{
    if (target.status() != draw2d::Status::Ok) return false;
    uint32_t* samples = target.data();
    draw2d::CairoSurface surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(samples),
                                                                     CAIRO_FORMAT_ARGB32, target.width(),
                                                                     target.height(), target.pitch() * 4));
    draw2d::CairoContext context(cairo_create(surface.get()));
    cairo_t* cr = context.get();
    if (cairo_status(cr) != CAIRO_STATUS_SUCCESS) return false;
    const Rgba background = options.background.value_or(background_);
    cairo_set_operator(cr, CAIRO_OPERATOR_SOURCE);
    cairo_set_source_rgba(cr, background.r / 255.0, background.g / 255.0, background.b / 255.0, background.a / 255.0);
    cairo_paint(cr);
    cairo_set_operator(cr, CAIRO_OPERATOR_OVER);
    cairo_set_antialias(cr, options.antialias ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
    if (frameCount() > 0) {
        const size_t frame = tick % frameCount();
        Painter painter(cr, *dictionary_, *bitmaps_, timeline_->position(frame), options.antialias);
        painter.paintTimeline(*timeline_, tick,
                              stageToTarget(header_.stage, target.width(), target.height(), options.scale),
                              ColorTransform{});
    }
    context.reset();
    cairo_surface_flush(surface.get());
    surface.reset();
    if (background.a != 255) {
        for (int y = 0; y < target.height(); ++y) pixel::unpremultiply(target.row(y));
    }
    return true;
}

}  // namespace qx::swf
