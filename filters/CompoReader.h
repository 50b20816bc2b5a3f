#pragma once
// The reader of composition files: the whole file decoded at once (UTF-8 or UTF-16 by
// their byte-order marks, else the ANSI code page), then read with a cursor by tokens and
// lines. It knows no comments and no blocks: the player matches keys at the start of
// lines and skips what it does not know a line at a time.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qx {

class CompoReader {
public:
    /// The text of `bytes`, decoded by its first bytes.
    explicit CompoReader(std::span<const uint8_t> bytes);
    /// The file at `path` (a POSIX path), read whole; nothing when it cannot be read.
    static std::optional<CompoReader> open(const std::string& path);

    /// The next run of characters up to a blank or a line end. `crossLines` skips line
    /// ends on the way; otherwise a line end (or the end of the text) gives an empty token
    /// and stays for the next reading that crosses lines.
    std::u16string_view Token(bool crossLines);
    /// Reads tokens of the current line until none is left; the line end stays.
    void SkipLine();
    /// `_wtoi` and `_wtof` of the next token; 0 at the end of the text.
    int32_t Integer();
    float Float();
    /// The text up to the second double quote, the quotes dropped and anything before the
    /// first kept; empty when a line end (or the end) comes first.
    std::u16string QuotedString();
    bool AtEnd() const { return cursor_ >= text_.size(); }

private:
    void skipBlanks(bool crossLines);

    std::u16string text_;
    size_t cursor_ = 0;
};

}  // namespace qx
