#include "platform/gpu/FxParser.h"

#include "platform/gpu/FxParameters.h"
#include "platform/gpu/FxStates.h"
#include "platform/gpu/FxTokens.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdlib>

namespace qx::gpu {

namespace {

bool equalsNoCase(const std::string& a, const char* b)
{
    const std::string_view other(b);
    return a.size() == other.size() && std::equal(a.begin(), a.end(), other.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
           });
}

class PassReader {
public:
    PassReader(const std::vector<FxToken>& tokens, size_t at) : tokens_(tokens), at_(at) {}

    bool readTechnique(FxTechnique& technique);
    size_t position() const { return at_; }

private:
    bool atText(const char* text) const { return at_ < tokens_.size() && tokens_[at_].text == text; }
    bool expect(const char* text)
    {
        if (!atText(text)) return false;
        ++at_;
        return true;
    }
    void skipNameAndAnnotations(std::string& name);
    bool readPass(FxPass& pass);
    bool readAssignment(FxPass& pass);
    void readShader(const std::string& name, const std::vector<std::string>& value, FxPass& pass) const;

    const std::vector<FxToken>& tokens_;
    size_t at_;
};

void PassReader::skipNameAndAnnotations(std::string& name)
{
    if (at_ < tokens_.size() && tokens_[at_].text != "{" && tokens_[at_].text != "<") name = tokens_[at_++].text;
    if (!atText("<")) return;
    while (at_ < tokens_.size() && tokens_[at_].text != ">") ++at_;
    ++at_;
}

bool PassReader::readTechnique(FxTechnique& technique)
{
    ++at_;  // "technique"
    skipNameAndAnnotations(technique.name);
    if (!expect("{")) return false;
    while (at_ < tokens_.size() && !atText("}")) {
        FxPass pass;
        if (!equalsNoCase(tokens_[at_].text, "pass") || !readPass(pass)) return false;
        technique.passes.push_back(std::move(pass));
    }
    return expect("}");
}

bool PassReader::readPass(FxPass& pass)
{
    ++at_;  // "pass"
    skipNameAndAnnotations(pass.name);
    if (!expect("{")) return false;
    while (at_ < tokens_.size() && !atText("}")) {
        if (!readAssignment(pass)) return false;
    }
    return expect("}");
}

// `Name [index] = value ;`
bool PassReader::readAssignment(FxPass& pass)
{
    const std::string name = tokens_[at_++].text;
    DWORD index = 0;
    if (atText("[")) {
        ++at_;
        if (at_ < tokens_.size()) index = DWORD(std::min(std::strtoul(tokens_[at_].text.c_str(), nullptr, 10), 15ul));
        while (at_ < tokens_.size() && !atText("]")) ++at_;
        ++at_;
    }
    if (!expect("=")) return false;
    std::vector<std::string> value;
    while (at_ < tokens_.size() && !atText(";") && !atText("}")) value.push_back(tokens_[at_++].text);
    if (!expect(";")) return false;
    if (equalsNoCase(name, "VertexShader") || equalsNoCase(name, "PixelShader")) {
        readShader(name, value, pass);
        return true;
    }
    StateAssignment state;
    if (readStateAssignment(name, index, value, state)) pass.states.push_back(state);
    return true;
}

// `compile profile entry(arguments)`; NULL leaves the stage out. Arguments are not read.
void PassReader::readShader(const std::string& name, const std::vector<std::string>& value, FxPass& pass) const
{
    const bool vertex = equalsNoCase(name, "VertexShader");
    std::string& entry = vertex ? pass.vertexEntry : pass.pixelEntry;
    std::string& profile = vertex ? pass.vertexProfile : pass.pixelProfile;
    entry.clear();
    if (value.size() >= 3 && value[0] == "compile") {
        profile = value[1];
        entry = value[2];
    }
}

bool isTechniqueKeyword(const std::string& text)
{
    return text == "technique" || text == "technique9" || text == "technique10" || text == "Technique";
}

}  // namespace

namespace {

// Blanks text[begin, end) out, keeping line breaks so that compile errors keep their lines.
void blankOut(std::string& text, size_t begin, size_t end)
{
    std::replace_if(
        text.begin() + std::ptrdiff_t(begin), text.begin() + std::ptrdiff_t(end), [](char c) { return c != '\n'; },
        ' ');
}

// The token after the `;` that ends a statement from `at`, or the end.
size_t statementEnd(const std::vector<FxToken>& tokens, size_t at)
{
    while (at < tokens.size() && tokens[at].text != ";") ++at;
    return std::min(at + 1, tokens.size());
}

bool isTextureKeyword(const std::string& text)
{
    return text == "texture" || text == "Texture" || text == "texture2D" || text == "textureCUBE";
}

}  // namespace

// Besides techniques, `texture` declarations are cut out, which the HLSL compiler does not
// take; the binding of parameters has already turned `sampler_state` blocks into states.
bool parseEffectText(const std::string& text, FxText& out)
{
    out = FxText{};
    out.hlsl = text;
    out.bindings = bindParameters(out.hlsl);
    const std::vector<FxToken> tokens = tokenizeEffect(out.hlsl);
    int depth = 0;
    for (size_t at = 0; at < tokens.size();) {
        const std::string& token = tokens[at].text;
        size_t next = at + 1;
        if (depth == 0 && isTechniqueKeyword(token)) {
            PassReader reader(tokens, at);
            FxTechnique technique;
            if (!reader.readTechnique(technique)) return false;
            out.techniques.push_back(std::move(technique));
            next = reader.position();
        } else if (depth == 0 && isTextureKeyword(token)) {
            next = statementEnd(tokens, at);
        } else {
            depth = std::max(depth + (token == "{" ? 1 : token == "}" ? -1 : 0), 0);
            ++at;
            continue;
        }
        blankOut(out.hlsl, tokens[at].begin, tokens[next - 1].end);
        at = next;
    }
    return true;
}

}  // namespace qx::gpu
