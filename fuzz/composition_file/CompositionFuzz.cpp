// 2D composition files from arbitrary bytes: the reader in its encodings, every entity
// kind with its keys and envelopes, parents, then frames drawn at a few times. Pictures
// named by the text are looked for and not found.
#include "filters/CompoPlayer.h"
#include "filters/CompoReader.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    qx3d::CompoPlayer::SetMessageHandler([](std::u16string_view) {});
    qx::CompoReader reader({data, size});
    qx3d::CompoPlayer player;
    const std::u16string pictures[] = {u"/nonexistent/a.png", u"/nonexistent/b.png"};
    player.Init(2, pictures, 64, 48, 4.0f / 3.0f, 2);
    player.Read(reader);
    qx::draw2d::Bitmap frame(64, 48);
    qx::draw2d::Graphics graphics(frame);
    for (const float progress : {0.0f, 0.37f, 1.0f, 1.5f}) player.Render(progress, graphics);
    return 0;
}
