#pragma once
// The token reader of the scene notation. The reader is itself a `String`: that string
// is its current token, so a reader can be asked for its own token and converted in
// place (`reader.ToFloat()`). The text is decoded once and only a cursor moves; saving
// and restoring the cursor is how a reader peeks.
#include "qx4d/core/String.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace qx4d {

class TextReader : public String {
public:
    /// A position in the text, as `SaveCursor` gives it.
    using Position = const char16_t*;

    TextReader() = default;
    ~TextReader() = default;
    TextReader(const TextReader&) = delete;
    TextReader& operator=(const TextReader&) = delete;

    /// Reads the whole file through the `FileManager` and decodes it; false when the file
    /// doesn't exist or can't be decoded.
    bool Open(std::u16string_view path);
    /// Takes the bytes of a file and decodes them: UTF-8 with its byte-order mark,
    /// little-endian UTF-16 with its byte-order mark, else the ANSI code page.
    bool SetBuffer(std::unique_ptr<uint8_t[]> bytes, size_t size);

    /// The next whitespace-separated token into `out`, comments dropped. With
    /// `crossLines` false it stops at the end of the line. False, with `out` untouched,
    /// when there is no token. `out` may be the reader itself.
    bool NextToken(String& out, bool crossLines);
    /// `NextToken` into the reader's own token.
    bool NextToken(bool crossLines);
    /// Drops what is left of the current line.
    void SkipLine();
    /// The next value, which may be quoted to hold blanks; into both `out` and the
    /// reader's own token.
    void ReadValue(String& out);

    /// The cursor stands at the end of the text.
    bool IsAtEnd() const;
    /// The cursor stands at a space or a tab.
    bool IsBlank() const;
    /// The cursor stands at a CR or an LF.
    bool IsLineEnd() const;

    /// The cursor, to come back to with `RestoreCursor`.
    Position SaveCursor() const { return cursor; }
    /// Moves the cursor back to a position that `SaveCursor` gave for the same text.
    void RestoreCursor(Position position);

private:
    bool ReadRawToken(String& out, bool crossLines);
    bool SkipBlanks(bool crossLines);
    void FinishComment(String& out);
    void Release();

    // The decoded text; for a UTF-16 file its first unit is the byte-order mark.
    std::u16string buffer;
    const char16_t* begin = nullptr;
    const char16_t* cursor = nullptr;
    const char16_t* end = nullptr;
};

/// `NextToken(reader, true)` then `ToFloat`; 0 when no token is left.
float ReadFloat(TextReader& reader);
/// `NextToken(reader, true)` then `ToInt`; 0 when no token is left.
int32_t ReadInt(TextReader& reader);
/// `NextToken(reader, true)` then `ToBool`; false when no token is left.
bool ReadBool(TextReader& reader);

}  // namespace qx4d
