#pragma once
// The tokens of an effect text: identifiers, numbers and single punctuation characters,
// with comments and strings skipped. Each token keeps its place in the text.
#include <string>
#include <vector>

namespace qx::gpu {

struct FxToken {
    std::string text;
    size_t begin = 0;
    size_t end = 0;
};

std::vector<FxToken> tokenizeEffect(const std::string& text);

}  // namespace qx::gpu
