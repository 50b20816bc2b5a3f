#pragma once
// qx3d::CompoPlayer: a 2D composition, drawn at any time. A composition file lists
// entities (pictures of the user, fixed pictures, outlines, invisible pivots) with a
// parent hierarchy; each has position, rotation, scale, pivot and transparency, any of
// which may follow an envelope over the composition's duration. The composition's space
// has its origin in the centre of the frame, 4 units across and 3 down, Y upwards.
// The user's pictures take the places of the `Image` entities, in turn.
#include "platform/draw2d/Graphics.h"
#include "qx4d/content/Envelope.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qx {
class CompoReader;
}

namespace qx3d {

class CompoPlayer {
public:
    /// The frame shape the pictures were authored for (4:3), as a 32-bit float.
    static constexpr float kAuthoredAspect = 1.3333334f;

    class Entity {
    public:
        virtual ~Entity() = default;
        /// Draws the entity; the graphics' transform is the frame matrix. A `Null` draws
        /// nothing: it only carries a place in the hierarchy.
        virtual void Draw(qx::draw2d::Graphics& graphics);
        /// The world transform from the channels' current values, after the parent's.
        void UpdateMatrix();

        std::u16string name;
        qx::draw2d::PointF position{0.0f, 0.0f};
        qx::draw2d::PointF scale{1.0f, 1.0f};
        float rotation = 0.0f;  // radians
        qx::draw2d::PointF pivot{0.0f, 0.0f};
        float transparency = 0.0f;  // 0 opaque, 1 invisible
        qx::draw2d::PointF size{1.0f, 1.0f};
        std::u16string parentName;
        Entity* parent = nullptr;  // not owned
        float aspect = kAuthoredAspect;
        int32_t stretch = 0;
        std::vector<std::unique_ptr<qx4d::Envelope>> envelopes;
        qx::draw2d::Matrix matrix;
    };

    /// A picture: one of the user's (`Image`) or a fixed one (`Prop`).
    class Image : public Entity {
    public:
        void Draw(qx::draw2d::Graphics& graphics) override;
        /// Loads the picture at `path`, shrunk to fit `maxWidth` by `maxHeight` when it is
        /// larger; false, with the picture as it was, when the file gives none.
        bool LoadPicture(std::u16string_view path, int32_t maxWidth, int32_t maxHeight);

        std::unique_ptr<qx::draw2d::Bitmap> bitmap;
    };

    /// An outline of the authoring tool: red lines in the composition's space.
    class Shape : public Entity {
    public:
        void Draw(qx::draw2d::Graphics& graphics) override;

        std::vector<qx::draw2d::PointF> path;  // one closed polygon
    };

    /// What the player has to say to the user. A Linux library has no message box:
    /// the host may set a handler; by default the text goes to standard error as one line.
    using MessageHandler = std::function<void(std::u16string_view text)>;
    static void SetMessageHandler(MessageHandler handler);

    CompoPlayer() = default;
    /// Deletes the entities from the last to the first.
    ~CompoPlayer();
    CompoPlayer(const CompoPlayer&) = delete;
    CompoPlayer& operator=(const CompoPlayer&) = delete;

    /// The user's `count` pictures, the frame and how pictures fit their places (0 stretch,
    /// 1 fit inside, 2 fill and crop). 0 when `count` is 0 or pictures were given already.
    int Init(int32_t count, const std::u16string* images, int32_t frameWidth, int32_t frameHeight, float frameAspect,
             int32_t stretchMode);
    /// Reads the composition at `path` (backslashes allowed); 0 when the file can't be
    /// read, which leaves a player that draws nothing.
    int Load(std::u16string_view path);
    /// Reads a composition from `reader`, as Load does from a file.
    void Read(qx::CompoReader& reader);
    /// Draws the composition at `progress` (0 to 1 over its duration) with `graphics`,
    /// whose transform is kept.
    void Render(float progress, qx::draw2d::Graphics& graphics);

    /// The lines of the file that begin with `Image` (inside blocks too); -1 when the file
    /// can't be read.
    static int32_t GetImagesCount(std::u16string_view path);
    /// The `Duration` of the file in seconds; -1.0 when it has none or can't be read.
    static float GetDuration(std::u16string_view path);

    float Duration() const { return duration; }
    const std::vector<std::unique_ptr<Entity>>& Entities() const { return entities; }

private:
    enum class Kind { Shape, Image, Prop, Null };

    void ReadEntity(qx::CompoReader& reader, Kind kind);
    /// One key line of a block; a key that this kind of entity lacks is ignored.
    void ReadKey(qx::CompoReader& reader, std::u16string_view key, Kind kind, Entity& entity);
    void ResolveParents();

    std::vector<std::unique_ptr<Entity>> entities;  // file order, which is the draw order
    int32_t nextImage = 0;
    std::vector<std::u16string> userImages;
    float duration = 0.0f;
    int32_t width = 0;
    int32_t height = 0;
    float aspect = 0.0f;
    int32_t stretch = 0;
};

}  // namespace qx3d
