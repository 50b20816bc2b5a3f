#include "platform/gpu/FxParameters.h"

#include "platform/gpu/FxStates.h"
#include "platform/gpu/FxTokens.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <regex>
#include <set>

namespace qx::gpu {

namespace {

/// A change of the text: [begin, end) becomes `text`.
struct Edit {
    size_t begin;
    size_t end;
    std::string text;
};

/// The shape of a numeric type: rows and columns, or nothing for another word.
std::optional<std::pair<DWORD, DWORD>> numericShape(const std::string& type)
{
    if (type == "matrix") return std::make_pair(4u, 4u);
    if (type == "vector") return std::make_pair(1u, 4u);
    static const std::regex kNumeric("(float|half|int|uint|bool|double)([1-4])?(?:x([1-4]))?");
    std::smatch match;
    if (!std::regex_match(type, match, kNumeric)) return std::nullopt;
    const DWORD first = match[2].matched ? DWORD(std::stoul(match[2].str())) : 1;
    if (match[3].matched) return std::make_pair(first, DWORD(std::stoul(match[3].str())));
    return std::make_pair(1u, first);
}

bool isSamplerType(const std::string& type)
{
    return type == "sampler" || type == "sampler2D" || type == "samplerCUBE" || type == "sampler3D" ||
           type == "sampler1D";
}

bool isQualifier(const std::string& word)
{
    static const std::set<std::string> kQualifiers = {"static", "const",    "uniform",   "extern",
                                                      "shared", "volatile", "row_major", "column_major"};
    return kQualifiers.contains(word);
}

/// A `register(xN)` clause at `at` (the token after ":"): the letter and number.
std::optional<std::pair<char, DWORD>> registerClause(const std::vector<FxToken>& tokens, size_t at)
{
    if (at + 3 >= tokens.size() || tokens[at].text != "register" || tokens[at + 1].text != "(") return std::nullopt;
    const std::string& slot = tokens[at + 2].text;
    if (slot.size() < 2 || !std::isdigit(static_cast<unsigned char>(slot[1]))) return std::nullopt;
    return std::make_pair(char(std::tolower(static_cast<unsigned char>(slot[0]))),
                          DWORD(std::strtoul(slot.c_str() + 1, nullptr, 10)));
}

class Binder {
public:
    explicit Binder(const std::string& text) : tokens_(tokenizeEffect(text)), text_(text) {}

    FxBindings bind(std::string& hlsl);

private:
    struct Declaration {
        size_t nameToken = 0;
        size_t afterName = 0;  // the token after the name and any array size
        size_t end = 0;        // the token of the closing ";"
        DWORD arraySize = 1;
        std::optional<std::pair<char, DWORD>> reg;
    };

    const std::string& word(size_t at) const
    {
        static const std::string kNone;
        return at < tokens_.size() ? tokens_[at].text : kNone;
    }
    size_t skipPreprocessorLine(size_t at) const;
    size_t skipBlock(size_t at) const;
    std::optional<Declaration> readDeclarator(size_t nameAt) const;
    size_t readGlobal(size_t at);
    void addConstant(const Declaration& declaration, DWORD rows, DWORD columns, bool rowMajor);
    void addSampler(const Declaration& declaration);
    void readSamplerState(size_t blockAt, FxSampler& sampler) const;
    std::vector<float> readDefaults(const Declaration& declaration, const FxParameter& parameter) const;
    void assignRegisters();

    std::vector<FxToken> tokens_;
    const std::string& text_;
    FxBindings bindings_;
    std::vector<Edit> edits_;
    // Parameters and samplers without a register, and the registers the text takes.
    std::vector<std::pair<size_t, size_t>> unboundConstants_;  // parameter index, token after the name
    std::vector<std::pair<size_t, size_t>> unboundSamplers_;
    DWORD constantsEnd_ = 0;
    std::set<DWORD> samplersTaken_;
};

size_t Binder::skipPreprocessorLine(size_t at) const
{
    const size_t lineEnd = text_.find('\n', tokens_[at].begin);
    while (at < tokens_.size() && (lineEnd == std::string::npos || tokens_[at].begin < lineEnd)) ++at;
    return at;
}

// The token after the "}" that closes the block opening at or after `at`; a ";" right
// behind it belongs to the block.
size_t Binder::skipBlock(size_t at) const
{
    int depth = 0;
    for (; at < tokens_.size(); ++at) {
        depth += word(at) == "{" ? 1 : word(at) == "}" ? -1 : 0;
        if (depth == 0 && word(at) == "}") return word(at + 1) == ";" ? at + 2 : at + 1;
    }
    return at;
}

std::optional<Binder::Declaration> Binder::readDeclarator(size_t nameAt) const
{
    Declaration declaration;
    declaration.nameToken = nameAt;
    size_t at = nameAt + 1;
    if (word(at) == "[") {
        declaration.arraySize = DWORD(std::max(1ul, std::strtoul(word(at + 1).c_str(), nullptr, 10)));
        if (word(at + 2) != "]") return std::nullopt;
        at += 3;
    }
    declaration.afterName = at;
    bool initialiser = false;
    while (at < tokens_.size() && word(at) != ";") {
        if (word(at) == ":" && registerClause(tokens_, at + 1)) {
            declaration.reg = declaration.reg ? declaration.reg : registerClause(tokens_, at + 1);
            at += 5;  // ": register ( xN )"
            continue;
        }
        initialiser |= word(at) == "=";
        // Before an initialiser, a "(" or "{" makes a function or a struct; several
        // declarators are left as they stand too.
        const bool block = word(at) == "{" && (initialiser || word(at - 1) == "sampler_state");
        if (word(at) == "," && !initialiser) return std::nullopt;
        if ((word(at) == "(" || word(at) == "{") && !initialiser && !block) return std::nullopt;
        at = block ? skipBlock(at) - (word(skipBlock(at) - 1) == ";" ? 1 : 0) : at + 1;
    }
    if (at >= tokens_.size()) return std::nullopt;
    declaration.end = at;
    return declaration;
}

// A global at `at`; returns the token after it.
size_t Binder::readGlobal(size_t at)
{
    bool isStatic = false, rowMajor = false;
    while (isQualifier(word(at))) {
        isStatic |= word(at) == "static";
        rowMajor |= word(at) == "row_major";
        ++at;
    }
    const std::string& type = word(at);
    const auto shape = numericShape(type);
    if (!shape && !isSamplerType(type)) return at + 1;
    const std::optional<Declaration> declaration = readDeclarator(at + 1);
    if (!declaration) return at + 1;
    if (!isStatic && shape)
        addConstant(*declaration, shape->first, shape->second, rowMajor);
    else if (!isStatic)
        addSampler(*declaration);
    return declaration->end + 1;
}

void Binder::addConstant(const Declaration& declaration, DWORD rows, DWORD columns, bool rowMajor)
{
    FxParameter parameter;
    parameter.name = word(declaration.nameToken);
    parameter.rows = rows;
    parameter.columns = columns;
    parameter.columnMajor = rows > 1 && !rowMajor;
    const DWORD perElement = parameter.columnMajor ? columns : rows;
    parameter.registerCount = perElement * declaration.arraySize;
    if (declaration.reg) {
        if (declaration.reg->first == 'c')
            constantsEnd_ = std::max(constantsEnd_, declaration.reg->second + parameter.registerCount);
        return;  // bound by the text: the engine sets its registers itself
    }
    parameter.defaults = readDefaults(declaration, parameter);
    // The semantic, annotations and initialiser go; the register comes after the name.
    edits_.push_back({tokens_[declaration.afterName].begin, tokens_[declaration.end].begin, ""});
    unboundConstants_.emplace_back(bindings_.parameters.size(), declaration.afterName);
    bindings_.parameters.push_back(std::move(parameter));
}

void Binder::addSampler(const Declaration& declaration)
{
    FxSampler sampler;
    sampler.name = word(declaration.nameToken);
    size_t block = declaration.afterName;
    while (block < declaration.end && word(block) != "sampler_state") ++block;
    if (block < declaration.end) readSamplerState(block + 1, sampler);
    if (declaration.reg && declaration.reg->first == 's') {
        sampler.stage = std::min<DWORD>(declaration.reg->second, kSamplerCount - 1);
        samplersTaken_.insert(sampler.stage);
        for (StateAssignment& state : sampler.states) state.index = sampler.stage;
        if (block < declaration.end) edits_.push_back({tokens_[block - 1].begin, tokens_[declaration.end].begin, ""});
    } else {
        edits_.push_back({tokens_[declaration.afterName].begin, tokens_[declaration.end].begin, ""});
        unboundSamplers_.emplace_back(bindings_.samplers.size(), declaration.afterName);
    }
    bindings_.samplers.push_back(std::move(sampler));
}

// `{ Texture = <name>; State = value; ... }`
void Binder::readSamplerState(size_t blockAt, FxSampler& sampler) const
{
    if (word(blockAt) != "{") return;
    const size_t end = skipBlock(blockAt);
    for (size_t at = blockAt + 1; at + 1 < end && word(at) != "}";) {
        const std::string key = word(at);
        size_t valueAt = at + 1;
        if (word(valueAt) != "=") {
            ++at;
            continue;
        }
        std::vector<std::string> value;
        for (++valueAt; valueAt < end && word(valueAt) != ";" && word(valueAt) != "}"; ++valueAt)
            if (word(valueAt) != "<" && word(valueAt) != ">" && word(valueAt) != "(" && word(valueAt) != ")")
                value.push_back(word(valueAt));
        if ((key == "Texture" || key == "texture") && !value.empty()) {
            sampler.texture = value.front();
        } else {
            StateAssignment state;
            if (readStateAssignment(key, 0, value, state) && state.sampler) sampler.states.push_back(state);
        }
        at = valueAt + 1;
    }
}

// The numbers of the initialiser in the order HLSL lists them (row by row), placed as the
// registers hold them.
std::vector<float> Binder::readDefaults(const Declaration& declaration, const FxParameter& parameter) const
{
    std::vector<float> values(size_t(parameter.registerCount) * 4, 0.0f);
    size_t at = declaration.afterName;
    while (at < declaration.end && word(at) != "=") ++at;
    const DWORD perElement = parameter.rows * parameter.columns;
    DWORD element = 0;
    for (++at; at < declaration.end; ++at) {
        const std::string& token = word(at);
        const bool negative = token == "-" && at + 1 < declaration.end;
        const std::string& number = negative ? word(at + 1) : token;
        float value = 0.0f;
        if (number == "true" || number == "false") {
            value = number == "true" ? 1.0f : 0.0f;
        } else if (!number.empty() && (std::isdigit(static_cast<unsigned char>(number[0])) || number[0] == '.')) {
            value = std::strtof(number.c_str(), nullptr);
        } else {
            continue;
        }
        at += negative ? 1 : 0;
        const DWORD entry = element / perElement, inEntry = element % perElement;
        const DWORD row = inEntry / parameter.columns, column = inEntry % parameter.columns;
        const DWORD reg = entry * (parameter.columnMajor ? parameter.columns : parameter.rows) +
                          (parameter.columnMajor ? column : row);
        const DWORD component = parameter.columnMajor ? row : column;
        if (reg < parameter.registerCount) values[size_t(reg) * 4 + component] = negative ? -value : value;
        ++element;
    }
    return values;
}

void Binder::assignRegisters()
{
    DWORD next = constantsEnd_;
    for (const auto& [index, afterName] : unboundConstants_) {
        FxParameter& parameter = bindings_.parameters[index];
        parameter.firstRegister = next;
        next += parameter.registerCount;
        edits_.push_back({tokens_[afterName].begin, tokens_[afterName].begin,
                          " : register(c" + std::to_string(parameter.firstRegister) + ")"});
    }
    DWORD stage = 0;
    for (const auto& [index, afterName] : unboundSamplers_) {
        while (samplersTaken_.contains(stage) && stage + 1 < kSamplerCount) ++stage;
        FxSampler& sampler = bindings_.samplers[index];
        sampler.stage = stage;
        samplersTaken_.insert(stage);
        for (StateAssignment& state : sampler.states) state.index = stage;
        edits_.push_back(
            {tokens_[afterName].begin, tokens_[afterName].begin, " : register(s" + std::to_string(stage) + ")"});
    }
}

FxBindings Binder::bind(std::string& hlsl)
{
    for (size_t at = 0; at < tokens_.size();) {
        if (word(at) == "#")
            at = skipPreprocessorLine(at);
        else if (word(at) == "{" || word(at) == "struct")
            at = skipBlock(at);
        else
            at = readGlobal(at);
    }
    assignRegisters();
    // From the last edit to the first, so that each keeps its place; insertions at the
    // same place as a removal go after it.
    std::stable_sort(edits_.begin(), edits_.end(), [](const Edit& a, const Edit& b) { return a.begin > b.begin; });
    for (const Edit& edit : edits_) {
        std::string blank(hlsl.begin() + std::ptrdiff_t(edit.begin), hlsl.begin() + std::ptrdiff_t(edit.end));
        std::replace_if(
            blank.begin(), blank.end(), [](char c) { return c != '\n'; }, ' ');
        hlsl.replace(edit.begin, edit.end - edit.begin, edit.text + blank);
    }
    return std::move(bindings_);
}

}  // namespace

FxBindings bindParameters(std::string& hlsl)
{
    const std::string original = hlsl;
    return Binder(original).bind(hlsl);
}

}  // namespace qx::gpu
