#include "apps/qxfx/ListCommand.h"

#include "apps/qxfx/Catalogue.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace qx::qxfx {

namespace {

constexpr const char* kUsage =
    "usage: qxfx list [--json]\n"
    "Prints the catalogue of effects: table index, effect id, name, category, whether\n"
    "the effect has a property dialog, whether it plays content of the data path (the\n"
    "content pack: scenes, animations) and its default parameter text; under each\n"
    "effect, the values of its parameter list: slot, name, default, range, kind and\n"
    "meaning.\n"
    "  --json   one JSON array, for scripts\n";

std::string jsonString(const std::string& text)
{
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            out += escaped;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

// Pads to a width counted in characters, not bytes, so that French names line up.
std::string padded(const std::string& text, size_t width)
{
    size_t characters = 0;
    for (const char c : text) characters += (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    return text + std::string(width > characters ? width - characters : 0, ' ');
}

// One line per slot under the effect: slot, name, default, range, kind and meaning.
void printParams(ParamTable params)
{
    size_t width = 0;
    for (const ParamDescriptor& p : params) width = std::max(width, std::strlen(p.name));
    for (const ParamDescriptor& p : params) {
        std::printf("      %2d %s %6ld  %ld to %ld, %s: %s\n", p.slot, padded(p.name, width).c_str(),
                    long(p.defaultValue), long(p.minimum), long(p.maximum), kindName(p.kind), p.meaning);
    }
}

void printTable(const std::vector<CatalogueEntry>& entries)
{
    std::printf("%-5s %-6s %s %s %-6s %-4s %s\n", "index", "id", padded("name", 32).c_str(),
                padded("category", 14).c_str(), "dialog", "pack", "defaults");
    for (const auto& e : entries) {
        std::printf("%-5d %-6d %s %s %-6s %-4s %s\n", e.index, e.id, padded(e.name.empty() ? "-" : e.name, 32).c_str(),
                    padded(e.categoryName, 14).c_str(), e.hasDialog ? "yes" : "no", e.needsPack ? "yes" : "no",
                    e.defaults.c_str());
        if (!e.source.empty()) std::printf("      source: %s\n", e.source.c_str());
        printParams(e.params);
    }
}

std::string jsonParams(ParamTable params)
{
    std::string out = "[";
    for (const ParamDescriptor& p : params) {
        if (out.size() > 1) out += ", ";
        out += "{\"slot\": " + std::to_string(p.slot) + ", \"name\": " + jsonString(p.name) +
               ", \"meaning\": " + jsonString(p.meaning) + ", \"default\": " + std::to_string(p.defaultValue) +
               ", \"minimum\": " + std::to_string(p.minimum) + ", \"maximum\": " + std::to_string(p.maximum) +
               ", \"kind\": " + jsonString(kindName(p.kind)) +
               ", \"caption\": " + (p.caption ? jsonString(p.caption) : "null") + "}";
    }
    return out + "]";
}

void printJson(const std::vector<CatalogueEntry>& entries)
{
    std::printf("[\n");
    for (size_t i = 0; i < entries.size(); ++i) {
        const auto& e = entries[i];
        std::printf(
            "  {\"index\": %d, \"id\": %d, \"name\": %s, \"category\": %d, \"categoryName\": %s, "
            "\"hasDialog\": %s, \"needsPack\": %s, \"source\": %s, \"defaults\": %s, \"params\": %s}%s\n",
            e.index, e.id, jsonString(e.name).c_str(), e.category, jsonString(e.categoryName).c_str(),
            e.hasDialog ? "true" : "false", e.needsPack ? "true" : "false", jsonString(e.source).c_str(),
            jsonString(e.defaults).c_str(), jsonParams(e.params).c_str(), i + 1 < entries.size() ? "," : "");
    }
    std::printf("]\n");
}

}  // namespace

int runList(std::span<const std::string_view> args)
{
    bool json = false;
    for (const auto arg : args) {
        if (arg == "--json") {
            json = true;
        } else if (arg == "--help" || arg == "-h") {
            std::fputs(kUsage, stdout);
            return 0;
        } else {
            std::fprintf(stderr, "qxfx list: unknown option '%.*s' (see 'qxfx list --help')\n", int(arg.size()),
                         arg.data());
            return 2;
        }
    }
    const auto entries = readCatalogue();
    json ? printJson(entries) : printTable(entries);
    return 0;
}

}  // namespace qx::qxfx
