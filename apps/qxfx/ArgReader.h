#pragma once
// Walks the arguments of a subcommand: options with their values, strictly parsed
// numbers, and one-line errors that name the option.
#include "apps/session/CommandError.h"

#include <span>
#include <string>
#include <string_view>

namespace qx::qxfx {

class ArgReader {
public:
    explicit ArgReader(std::span<const std::string_view> args) : args_(args) {}

    bool done() const { return next_ >= args_.size(); }
    std::string_view take() { return args_[next_++]; }
    /// The value that follows `option`; CommandError when there is none.
    std::string value(std::string_view option);

    long integer(std::string_view option, long min, long max);
    double number(std::string_view option, double min, double max);
    /// "WxH", each side from 1 to `maxSide`.
    std::pair<int, int> size(std::string_view option, int maxSide);

private:
    std::span<const std::string_view> args_;
    size_t next_ = 0;
};

}  // namespace qx::qxfx
