#pragma once
// The one error type of the command line and of the session it renders through: a
// message for the user, naming the problem. Commands print it on one line and exit with a
// non-zero code; the frei0r filters pass the frame through instead.
#include <stdexcept>
#include <string>

namespace qx::qxfx {

class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace qx::qxfx
