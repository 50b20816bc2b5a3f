// Damaged and hostile files: cut short anywhere, tags that lie about their length, bit
// fields past the end, outlines that never close, empty gradients, bitmaps whose sizes
// lie, sprites that hold themselves, and compressed streams that would inflate without
// end. Each is refused or drawn in part, never read out of bounds, never endless.
#include "platform/swf/ByteReader.h"
#include "platform/swf/Inflate.h"
#include "platform/swf/Tags.h"
#include "tests/platform/swf/MovieFixture.h"
#include "tools/swf/SampleMovies.h"

#include <chrono>
#include <zlib.h>

namespace qx::swf::test {
namespace {

constexpr Rgba kWhite{255, 255, 255, 255};
constexpr Rgba kRed{255, 0, 0, 255};

TEST(ByteReader, FieldsPastTheEndReadAsZeroAndFail)
{
    const uint8_t bytes[] = {0xB4, 0x01};
    ByteReader reader(bytes);
    EXPECT_EQ(reader.sb(3), -3);  // 101: sign-extended
    EXPECT_EQ(reader.ub(5), 0x14u);
    EXPECT_FALSE(reader.failed());
    EXPECT_EQ(reader.u16(), 0u);  // one byte left
    EXPECT_TRUE(reader.failed());
    EXPECT_EQ(reader.u8(), 0u);
    EXPECT_EQ(reader.remaining(), 0u);
    ByteReader unterminated(std::span<const uint8_t>(bytes, 2));
    EXPECT_EQ(unterminated.string(), "");
    EXPECT_TRUE(unterminated.failed());
}

TEST(ByteReader, WideBitFieldsKeepEveryBit)
{
    const uint8_t bytes[] = {0x80, 0x00, 0x00, 0x01, 0xFF};
    ByteReader reader(bytes);
    EXPECT_EQ(reader.sb(32), int32_t(0x80000001u));
    EXPECT_EQ(reader.ub(8), 0xFFu);
    EXPECT_EQ(reader.ub(33), 0u);  // wider than any field of the format
    EXPECT_TRUE(reader.failed());
}

TEST(Tags, LengthsPastTheDataAreCutAndEndTheStream)
{
    // A ShowFrame, then a tag whose long length claims 1000 bytes where 3 remain.
    const uint8_t stream[] = {0x40, 0x00, 0xBF, 0x00, 0xE8, 0x03, 0x00, 0x00, 1, 2, 3};
    bool truncated = false;
    const auto tags = splitTags(stream, &truncated);
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[0].code, kShowFrame);
    EXPECT_EQ(tags[1].code, kDefineShape);
    EXPECT_EQ(tags[1].body.size(), 3u);
    EXPECT_TRUE(truncated);
}

TEST(Inflate, OutputStopsAtItsLimit)
{
    // 16 MiB of zeros in a few kilobytes: inflated no further than asked.
    const std::vector<uint8_t> zeros(size_t(16) << 20, 0);
    uLongf packedSize = compressBound(uLong(zeros.size()));
    std::vector<uint8_t> packed(packedSize);
    ASSERT_EQ(compress2(packed.data(), &packedSize, zeros.data(), uLong(zeros.size()), 9), Z_OK);
    packed.resize(packedSize);
    const Inflated capped = inflateZlib(packed, 1000);
    EXPECT_EQ(capped.bytes.size(), 1000u);
    EXPECT_FALSE(capped.complete);
    EXPECT_EQ(inflateExactly(packed, 1000)->size(), 1000u);  // bitmap data may run on past its picture
    EXPECT_FALSE(inflateExactly(packed, zeros.size() + 1).has_value());
    EXPECT_EQ(inflateZlib(std::span(packed).first(packed.size() / 2), zeros.size()).complete, false);
}

TEST(SwfFile, CompressedBodiesStopAtTheDeclaredLength)
{
    SwfWriter writer = stageOf(10, 10);
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, kRed));
    writer.place(1, 1);
    writer.showFrame();
    for (const auto compression : {swftool::Compression::Zlib, swftool::Compression::Lzma}) {
        auto file = writer.finish(compression);
        const auto whole = readSwf(file);
        ASSERT_TRUE(whole);
        EXPECT_TRUE(whole->complete);
        EXPECT_TRUE(near(colorAt(*draw(*loadMovie(file), 0, 10, 10), 5, 5), kRed));
        // A declared length shorter than the stream cuts the body there.
        file[4] = 20;
        file[5] = file[6] = file[7] = 0;
        const auto cut = readSwf(file);
        ASSERT_TRUE(cut);
        EXPECT_EQ(cut->bytes.size(), 12u);
    }
}

TEST(SwfFile, OtherSignaturesAreNotMovies)
{
    EXPECT_FALSE(Movie::load(std::vector<uint8_t>{'G', 'W', 'S', 10, 30, 0, 0, 0, 0x50, 0, 0, 0}));
    EXPECT_FALSE(Movie::load(std::vector<uint8_t>{'F', 'W', 'S'}));
    EXPECT_FALSE(Movie::loadFile("/nonexistent/movie.swf"));
}

TEST(Robustness, EveryCutOfAFileLoadsOrIsRefused)
{
    for (const auto compression : {swftool::Compression::None, swftool::Compression::Zlib}) {
        const auto file = swftool::sampleAnimation(3, compression);
        for (size_t length = 0; length < file.size(); length += 7) {
            const std::vector<uint8_t> cut(file.begin(), file.begin() + ptrdiff_t(length));
            if (const auto movie = Movie::load(cut)) {
                for (size_t tick = 0; tick < 3; ++tick) draw(*movie, tick, 32, 18);
            }
        }
    }
}

TEST(Robustness, OutlinesThatNeverCloseAreFilledAsClosed)
{
    SwfWriter writer = stageOf(20, 20);
    ShapeBuilder shape;
    shape.fills = {FillStyle{FillKind::Solid, kRed}};
    shape.moveTo(0, 0).fill1(1).lineTo(400, 0).lineTo(400, 400);  // a triangle's two sides
    writer.defineShape(1, shape);
    writer.place(1, 1);
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 20, 20);
    EXPECT_TRUE(near(colorAt(*frame, 18, 5), kRed));
    EXPECT_TRUE(near(colorAt(*frame, 5, 18), kWhite));
}

TEST(Robustness, GradientsWithoutStopsAndMissingBitmapsDrawNothing)
{
    SwfWriter writer = stageOf(30, 10);
    ShapeBuilder shape;
    FillStyle empty;
    empty.kind = FillKind::Radial;
    FillStyle noBitmap;
    noBitmap.kind = FillKind::Bitmap;
    noBitmap.bitmapId = 77;  // never defined
    shape.fills = {empty, noBitmap, FillStyle{FillKind::Solid, kRed}};
    shape.rectangle(0, 0, 200, 200, 1).rectangle(200, 0, 400, 200, 2).rectangle(400, 0, 600, 200, 3);
    writer.defineShape(1, shape);
    writer.place(1, 1);
    writer.showFrame();
    const auto frame = draw(*loadMovie(writer.finish()), 0, 30, 10);
    EXPECT_TRUE(near(colorAt(*frame, 5, 5), kWhite));
    EXPECT_TRUE(near(colorAt(*frame, 15, 5), kWhite));
    EXPECT_TRUE(near(colorAt(*frame, 25, 5), kRed));
}

TEST(Robustness, BitmapsWhoseSizesLieAreNotDrawn)
{
    SwfWriter writer = stageOf(20, 10);
    writer.defineLossless(1, 2, 2, std::vector<uint32_t>(4, 0xFF00FF00), false);
    writer.defineLossless(2, 2, 2, std::vector<uint32_t>(4, 0xFF00FF00), false);
    auto file = writer.finish();
    // Bitmap 2 claims 300 by 300 samples over the data of 2 by 2.
    const size_t tagsStart = 8 + readSwf(file)->tagsOffset;
    const auto tags = splitTags(std::span(file).subspan(tagsStart));
    ASSERT_EQ(tags.size(), 2u);
    auto* header = const_cast<uint8_t*>(tags[1].body.data());
    header[3] = 0x2C;
    header[4] = 0x01;
    header[5] = 0x2C;
    header[6] = 0x01;
    SwfWriter scene = stageOf(20, 10);
    std::vector<uint8_t> withFills(file.begin(), file.end() - 2);  // drop End and add the scene
    const auto placeFill = [](uint16_t bitmap, int left) {
        ShapeBuilder shape;
        FillStyle fill;
        fill.kind = FillKind::Bitmap;
        fill.bitmapId = bitmap;
        fill.matrix = {100, 0, 0, 100, double(left * 20), 0};
        shape.fills = {fill};
        shape.rectangle(left * 20, 0, (left + 10) * 20, 200, 1);
        return shape;
    };
    scene.defineShape(10, placeFill(1, 0));
    scene.defineShape(11, placeFill(2, 10));
    scene.place(1, 10);
    scene.place(2, 11);
    scene.showFrame();
    const auto sceneFile = scene.finish();
    withFills.insert(withFills.end(), sceneFile.begin() + ptrdiff_t(tagsStart), sceneFile.end());
    const auto frame = draw(*loadMovie(withFills), 0, 20, 10);
    EXPECT_TRUE(near(colorAt(*frame, 5, 5), {0, 255, 0, 255}));
    EXPECT_TRUE(near(colorAt(*frame, 15, 5), kWhite));
}

TEST(Robustness, SpritesThatHoldThemselvesEndInTime)
{
    SwfWriter writer = stageOf(20, 20);
    writer.defineShape(1, rectangleShape(0, 0, 10, 10, kRed));
    TagList sprite;
    sprite.place(1, 1);
    sprite.place(2, 2, {0.9, 0, 0, 0.9, 20, 20});  // itself, twice
    sprite.place(3, 2, {0.9, 0, 0, 0.9, 40, 0});
    sprite.showFrame();
    writer.defineSprite(2, sprite);
    writer.place(1, 2);
    writer.showFrame();
    const auto movie = loadMovie(writer.finish());
    const auto start = std::chrono::steady_clock::now();
    const auto frame = draw(*movie, 0, 20, 20);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
    EXPECT_TRUE(near(colorAt(*frame, 5, 5), kRed));
}

}  // namespace
}  // namespace qx::swf::test
