#pragma once
// An SWF movie, loaded whole and drawn frame by frame on the 2D layer's bitmaps. What is
// drawn: shapes 1 to 4 (solid, gradient and bitmap fills, lines), morph shapes, bitmaps,
// sprites and masks, with the matrices, colour transforms and ratios of the display
// list. What is not: ActionScript, text, buttons, sound, video streams, filters and
// blend modes. Frames are counted by their ShowFrame tags, never by the header.
//
// A movie is used by one thread at a time: drawing advances shared replay state.
#include "platform/draw2d/Bitmap.h"
#include "platform/swf/SwfFile.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace qx::swf {

class Dictionary;
class BitmapCache;
class Timeline;

/// How the stage meets the target: the whole stage, centred, with its own shape
/// ("show all"), or stretched to fill the target ("exact fit").
enum class ScaleMode { ShowAll, ExactFit };

struct RenderOptions {
    ScaleMode scale = ScaleMode::ShowAll;
    /// Smooth edges and bitmaps; off, as at the players' low quality, every pixel is
    /// either inside a shape or not.
    bool antialias = true;
    /// Replaces the movie's background colour; a colour with alpha below 255 leaves
    /// straight-alpha samples in the target.
    std::optional<Rgba> background;
};

class Movie {
public:
    /// Nothing when `file` is not a readable SWF file. Damaged tags after a good header
    /// leave a movie that draws what could be read.
    static std::unique_ptr<Movie> load(std::span<const uint8_t> file);
    /// The same from a file; nothing when it cannot be read either.
    static std::unique_ptr<Movie> loadFile(const std::string& path);
    ~Movie();
    Movie(const Movie&) = delete;
    Movie& operator=(const Movie&) = delete;

    const MovieHeader& header() const { return header_; }
    /// Frames of the main timeline.
    size_t frameCount() const;
    /// The colour of the first SetBackgroundColor tag; white when there is none.
    Rgba background() const { return background_; }

    /// Draws the movie `tick` frames after its start into `target`: the main timeline's
    /// frame `tick` modulo the frame count, and every sprite `tick` frames older than when
    /// it was placed. False when the target cannot be drawn on.
    bool render(size_t tick, draw2d::Bitmap& target, const RenderOptions& options = {}) const;

private:
    Movie();
    void readTags(std::span<const uint8_t> stream);

    MovieHeader header_;
    Rgba background_{255, 255, 255, 255};
    std::vector<uint8_t> bytes_;  // the uncompressed file, which tags and bitmaps point into
    std::unique_ptr<Dictionary> dictionary_;
    std::unique_ptr<Timeline> timeline_;
    std::unique_ptr<BitmapCache> bitmaps_;
};

}  // namespace qx::swf
