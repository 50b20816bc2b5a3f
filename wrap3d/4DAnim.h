#pragma once
// The client of a 3D composition: up to four user pictures on the composition's
// placeholders, uploaded by the source that plays it. It counts device resets, after
// which the pictures must be uploaded again.
#include "wrap3d/4DTransform.h"
#include "wrap3d/Context.h"

namespace qx {

class C4DAnim : public C4DTransform, public C4DReset {
public:
    /// Stops counting resets before the player goes.
    ~C4DAnim() override;

    LONG Init() override;
    /// The pictures the composition has places for; 0 without a player.
    LONG GetImageCount() const;
    /// Uploads picture `index`, without the bridge's lock: the caller holds it.
    bool SetImage(LONG index, const uint32_t* pixels);

protected:
    void Draw() override;

private:
    bool listening = false;
};

}  // namespace qx
