#pragma once
// A time function that drives one float of the engine through a target pointer.
namespace qx4d {

class TextReader;

class Controller {
public:
    explicit Controller(float* boundTarget) : target(boundTarget) {}
    virtual ~Controller() = default;
    Controller(const Controller&) = delete;
    Controller& operator=(const Controller&) = delete;

    /// Reads the controller from the scene notation; true on success.
    virtual bool Load(TextReader& reader) = 0;
    /// Writes the value at time `t` to the target.
    virtual void Update(float t) { Evaluate(t, target); }
    /// Writes the value at time `t` to `*out`.
    virtual void Evaluate(float t, float* out) = 0;

    float* GetTarget() const { return target; }
    void SetTarget(float* newTarget) { target = newTarget; }

protected:
    float* target;
};

}  // namespace qx4d
