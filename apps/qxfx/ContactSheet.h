#pragma once
// The demo's contact sheet: for each effect a caption with its id and name over three
// pictures of it (at progress 0, one half and 1), or over the note that says why it was
// skipped; two effects a row.
#include "apps/session/Frame.h"

#include <array>
#include <string>
#include <vector>

namespace qx::qxfx {

class ContactSheet {
public:
    static constexpr int kThumbWidth = 200;
    static constexpr int kThumbHeight = 112;

    /// Adds an effect with its three pictures, copied at thumbnail size.
    void add(const std::string& caption, std::array<Frame, 3>& frames);
    /// Adds an effect that was skipped, with the reason.
    void addSkipped(const std::string& caption, const std::string& note);

    /// Writes the sheet as a PNG file; CommandError when it cannot be written.
    void write(const std::string& path) const;

private:
    struct Cell {
        std::string caption;
        std::vector<Frame> thumbnails;  // none for a skipped effect
        std::string note;
    };
    std::vector<Cell> cells_;
};

}  // namespace qx::qxfx
