#pragma once
// The clients that play a scene of the data path over live frames: an effect scene on
// one frame, a particle scene on one frame, and a transition scene between two frames.
#include "wrap3d/4DTransform.h"

namespace qx {

class C4DEffect : public C4DTransform {
public:
    LONG Init() override;

protected:
    void Draw() override;
};

class C4DParticles : public C4DTransform {
public:
    LONG Init() override;

protected:
    /// The scene's time is progress x duration, in seconds.
    void Draw() override;
};

class C4DTransition : public C4DTransform {
public:
    LONG Init() override;

protected:
    void Draw() override;
};

}  // namespace qx
