#include "qx4d/core/TextReader.h"

#include "platform/os/CodePage.h"
#include "platform/os/WideText.h"
#include "qx4d/core/FileManager.h"

#include <cstring>
#include <vector>

namespace qx4d {

namespace {

bool isBlankUnit(char16_t c) { return c == u' ' || c == u'\t'; }
bool isLineEndUnit(char16_t c) { return c == u'\r' || c == u'\n'; }

// Comment handling still to do after a token, innermost last. Comments are defined
// recursively (a comment's reads may meet further comments); this explicit stack keeps
// that exact order of reads, while a file of thousands of comment lines or nested
// blocks can't exhaust the call stack.
struct PendingStep {
    enum Kind {
        SkipLine,    // read tokens of the line into the reader's own token until none is left
        FinalToken,  // read one more token across lines, result ignored
        BlockToken,  // read the next token of a block comment
        BlockCheck,  // after a block token: stop at "*/", else read on
    };
    Kind kind;
    String* out;
};

// A token that opens a comment starts the comment's steps: "//" drops the rest of the
// line and then reads the next token across lines; "/*" reads tokens up to "*/" and then
// one more. Comments met on the way nest, because each read may open another.
void pushCommentSteps(std::vector<PendingStep>& steps, String& token)
{
    if (token == u"//") {
        steps.push_back({PendingStep::FinalToken, &token});
        steps.push_back({PendingStep::SkipLine, nullptr});
    } else if (token == u"/*") {
        steps.push_back({PendingStep::BlockToken, &token});
    }
}

}  // namespace

bool TextReader::IsAtEnd() const { return cursor >= end; }

bool TextReader::IsBlank() const { return !IsAtEnd() && isBlankUnit(*cursor); }

bool TextReader::IsLineEnd() const { return !IsAtEnd() && isLineEndUnit(*cursor); }

void TextReader::RestoreCursor(Position position)
{
    if (position >= begin && position <= end) cursor = position;
}

bool TextReader::SkipBlanks(bool crossLines)
{
    while (!IsAtEnd() && (IsBlank() || (crossLines && IsLineEnd()))) ++cursor;
    return !IsAtEnd() && !IsLineEnd();
}

bool TextReader::ReadRawToken(String& out, bool crossLines)
{
    if (!SkipBlanks(crossLines)) return false;
    const char16_t* start = cursor;
    while (!IsAtEnd() && !IsBlank() && !IsLineEnd()) ++cursor;
    out.assign(start, cursor);
    return true;
}

void TextReader::FinishComment(String& out)
{
    std::vector<PendingStep> steps;
    pushCommentSteps(steps, out);
    while (!steps.empty()) {
        const PendingStep step = steps.back();
        steps.pop_back();
        switch (step.kind) {
        case PendingStep::SkipLine:
            if (ReadRawToken(*this, false)) {
                steps.push_back(step);
                pushCommentSteps(steps, *this);
            }
            break;
        case PendingStep::FinalToken:
            if (ReadRawToken(*step.out, true)) pushCommentSteps(steps, *step.out);
            break;
        case PendingStep::BlockToken:
            if (ReadRawToken(*step.out, true)) {
                steps.push_back({PendingStep::BlockCheck, step.out});
                pushCommentSteps(steps, *step.out);
            } else {
                steps.push_back({PendingStep::FinalToken, step.out});
            }
            break;
        case PendingStep::BlockCheck:
            steps.push_back({*step.out == u"*/" ? PendingStep::FinalToken : PendingStep::BlockToken, step.out});
            break;
        }
    }
}

bool TextReader::NextToken(String& out, bool crossLines)
{
    if (!ReadRawToken(out, crossLines)) return false;
    FinishComment(out);
    return true;
}

bool TextReader::NextToken(bool crossLines) { return NextToken(*this, crossLines); }

void TextReader::SkipLine()
{
    while (NextToken(*this, false)) {}
}

void TextReader::ReadValue(String& out)
{
    SkipBlanks(true);
    clear();
    if (!IsAtEnd() && *cursor == u'"') {
        const char16_t* start = ++cursor;
        while (!IsAtEnd() && *cursor != u'"' && !IsLineEnd()) ++cursor;
        assign(start, cursor);
        if (!IsAtEnd() && *cursor == u'"') ++cursor;
    } else {
        const char16_t* start = cursor;
        while (!IsAtEnd() && !IsBlank() && !IsLineEnd()) ++cursor;
        assign(start, cursor);
    }
    if (&out != this) out = *this;
}

void TextReader::Release()
{
    buffer = std::u16string();
    begin = cursor = end = nullptr;
}

bool TextReader::SetBuffer(std::unique_ptr<uint8_t[]> bytes, size_t size)
{
    Release();
    if (!bytes || size == 0) return false;
    const uint8_t* data = bytes.get();
    std::u16string text;
    size_t first = 0;
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF) {
        text = qx::os::fromUtf8(std::string_view(reinterpret_cast<const char*>(data) + 3, size - 3));
    } else if (size >= 2 && data[0] == 0xFF && data[1] == 0xFE) {
        // Little-endian UTF-16 is taken as it stands, its byte-order mark in the first
        // unit. A lone last byte of an odd size is no whole unit and is left out.
        text.resize(size / 2);
        std::memcpy(text.data(), data, text.size() * sizeof(char16_t));
        first = 1;
    } else {
        // One unit per byte: the ANSI code page is single-byte, so no file fails here.
        text = qx::os::toWide(qx::os::CodePage::Ansi, std::string_view(reinterpret_cast<const char*>(data), size));
    }
    buffer = std::move(text);
    begin = cursor = buffer.data() + first;
    end = buffer.data() + buffer.size();
    return true;
}

bool TextReader::Open(std::u16string_view path)
{
    FileManager* files = FileManager::Instance();
    if (!files) return false;
    size_t size = 0;
    std::unique_ptr<uint8_t[]> bytes = files->Load(path, size);
    if (!bytes) return false;
    return SetBuffer(std::move(bytes), size);
}

float ReadFloat(TextReader& reader) { return reader.NextToken(true) ? reader.ToFloat() : 0.0f; }

int32_t ReadInt(TextReader& reader) { return reader.NextToken(true) ? reader.ToInt() : 0; }

bool ReadBool(TextReader& reader) { return reader.NextToken(true) ? reader.ToBool() : false; }

}  // namespace qx4d
