#pragma once
// CSwfRenderer: still frames of a Shockwave Flash movie, for the compositor's ".dat"
// overlays, the vector animation effect and the thumbnails of CFlashAnimation.
//
// The movie lives on a worker thread of the renderer's own, as the player control did:
// Load starts the worker, which loads the movie (the control's set-up) and then serves
// thread messages: 2224 draws the wanted frame into the renderer's bitmap on a magenta
// background, 2225 ends the worker. Callers block in Draw until the frame is drawn, then
// copy the bitmap into their pixels on their own thread. Magenta is the background so
// that an owner can key it out; frames are drawn at the player's low quality, without
// smoothing, so that no edge mixes magenta into the picture.
#include "platform/com/HResult.h"
#include "platform/os/MessageQueue.h"
#include "platform/swf/Movie.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace qx {

class CSwfRenderer {
public:
    /// The thread messages of the worker.
    static constexpr uint32_t kDrawMessage = 2224;
    static constexpr uint32_t kQuitMessage = 2225;
    /// The background of every frame: (255, 0, 255), as 0x00FF00FF in the player's
    /// colour order (red lowest).
    static constexpr swf::Rgba kMagenta{255, 0, 255, 255};

    CSwfRenderer() = default;
    ~CSwfRenderer();
    CSwfRenderer(const CSwfRenderer&) = delete;
    CSwfRenderer& operator=(const CSwfRenderer&) = delete;

    /// Loads the movie `path`, relative to the global data path (the data path, a
    /// backslash and `path`), for frames of `width` by `height`, stretched to them when
    /// `exactFit` is set and centred with the stage's shape otherwise. 0 when the file
    /// does not exist; a file that exists but holds no movie loads with no frames.
    int Load(std::u16string_view path, LONG width, LONG height, int exactFit);
    /// Seconds of the clip the movie plays over.
    void SetDuration(float seconds) { duration = seconds; }
    /// Draws the frame at `progress` (0 to 1) into `pixels` (`width` by `height` words,
    /// top-down), over the rectangle at `x`, `y` (fractions of the size) of `scaleX` by
    /// `scaleY` (fractions too). With `keyed`, magenta samples of the frame are left out
    /// and `pixels` keeps what it had there.
    void Draw(uint32_t* pixels, float progress, int keyed, float x, float y, float scaleX, float scaleY);

    /// Frames of the loaded movie; 0 before Load or when the movie could not be read.
    LONG TotalFrames() const { return totalFrames; }
    /// The frame rate from the movie's header.
    float Fps() const { return fps; }

private:
    void Run();
    void Host();
    void DrawFrame();
    /// The frame `progress` asks for; -1 when it is outside the movie.
    int64_t FrameIndex() const;

    // The movie and its drawing state, owned by the worker (the control of the player).
    std::unique_ptr<swf::Movie> host;
    LONG width = 0;
    LONG height = 0;
    LONG totalFrames = 0;
    float duration = 0.0f;
    float fps = 0.0f;
    int exactFit = 0;
    std::vector<uint32_t> bits;  // width by height, top-down
    std::u16string path;
    float progress = 0.0f;
    std::thread thread;
    os::MessageQueue queue;
    os::Event doneEvent;
};

}  // namespace qx
