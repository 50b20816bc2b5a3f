#include "platform/com/RegistryFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <system_error>
#include <unistd.h>

namespace qx::com {

namespace {

constexpr std::string_view kHeader = "QXCOM Registry 1";

char lowerAscii(char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; }

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    c = lowerAscii(c);
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

void appendQuoted(std::string& out, std::string_view text)
{
    static constexpr char kHex[] = "0123456789ABCDEF";
    out += '"';
    for (const char c : text) {
        if (c == '\\' || c == '"') {
            out += '\\';
            out += c;
        } else if (isControl(c)) {
            const auto byte = static_cast<unsigned char>(c);
            out += "\\x";
            out += kHex[byte >> 4];
            out += kHex[byte & 15];
        } else {
            out += c;
        }
    }
    out += '"';
}

/// Reads a quoted text at the start of `line`, moving past it; nothing when malformed.
std::optional<std::string> readQuoted(std::string_view& line)
{
    if (line.empty() || line.front() != '"') return std::nullopt;
    std::string text;
    size_t i = 1;
    for (; i < line.size() && line[i] != '"'; ++i) {
        char c = line[i];
        if (isControl(c)) return std::nullopt;
        if (c == '\\') {
            if (++i >= line.size()) return std::nullopt;
            c = line[i];
            if (c == 'x') {
                if (i + 2 >= line.size()) return std::nullopt;
                const int high = hexDigit(line[i + 1]);
                const int low = hexDigit(line[i + 2]);
                if (high < 0 || low < 0) return std::nullopt;
                c = char(high * 16 + low);
                i += 2;
            } else if (c != '\\' && c != '"') {
                return std::nullopt;
            }
        }
        text += c;
    }
    if (i >= line.size()) return std::nullopt;
    line.remove_prefix(i + 1);
    return text;
}

/// "dword:" and 1 to 8 hex digits, the whole of `text`.
std::optional<uint32_t> readDword(std::string_view text)
{
    constexpr std::string_view kPrefix = "dword:";
    if (!text.starts_with(kPrefix)) return std::nullopt;
    text.remove_prefix(kPrefix.size());
    if (text.empty() || text.size() > 8) return std::nullopt;
    uint32_t value = 0;
    for (const char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0) return std::nullopt;
        value = value << 4 | uint32_t(digit);
    }
    return value;
}

/// One `name=value` line into `values`; false when malformed.
bool parseValueLine(std::string_view line, std::string& name, RegistryValue& value)
{
    if (line.starts_with('@')) {
        name.clear();
        line.remove_prefix(1);
    } else {
        auto quoted = readQuoted(line);
        if (!quoted || quoted->empty()) return false;
        name = std::move(*quoted);
    }
    if (!line.starts_with('=')) return false;
    line.remove_prefix(1);
    if (line.starts_with('"')) {
        auto text = readQuoted(line);
        if (!text || !line.empty()) return false;
        value = std::move(*text);
        return true;
    }
    const auto number = readDword(line);
    if (!number) return false;
    value = *number;
    return true;
}

bool sameText(std::string_view a, std::string_view b)
{
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lowerAscii(x) == lowerAscii(y); });
}

/// True when `name` is the key `key` or a key under it.
bool isAtOrUnder(std::string_view name, std::string_view key)
{
    if (name.size() < key.size() || !sameText(name.substr(0, key.size()), key)) return false;
    return name.size() == key.size() || name[key.size()] == '\\';
}

/// Writes `content` to a new file and waits until it is on the disk, so that the rename
/// that follows never shows an empty file after a crash.
bool writeDurably(const std::filesystem::path& path, std::string_view content)
{
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0) return false;
    bool written = true;
    while (written && !content.empty()) {
        const ssize_t count = ::write(file, content.data(), content.size());
        if (count < 0 && errno == EINTR) continue;
        written = count > 0;
        if (written) content.remove_prefix(size_t(count));
    }
    written = written && ::fsync(file) == 0;
    return ::close(file) == 0 && written;
}

}  // namespace

bool RegistryFile::CaseLess::operator()(std::string_view a, std::string_view b) const
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](char x, char y) { return lowerAscii(x) < lowerAscii(y); });
}

std::filesystem::path RegistryFile::defaultPath()
{
    // The platform's own place for per-user data; the library reads nothing of its own.
    const char* dataHome = std::getenv("XDG_DATA_HOME");
    std::filesystem::path base;
    if (dataHome && dataHome[0] == '/') {
        base = dataHome;
    } else {
        const char* home = std::getenv("HOME");
        base = std::filesystem::path(home ? home : "/") / ".local" / "share";
    }
    return base / "qxcom" / "classes.reg";
}

bool RegistryFile::isValidKey(std::string_view key)
{
    if (key.empty() || key.front() == '\\' || key.back() == '\\') return false;
    if (key.find("\\\\") != std::string_view::npos) return false;
    return std::none_of(key.begin(), key.end(), [](char c) { return isControl(c) || c == '[' || c == ']'; });
}

bool RegistryFile::parse(std::string_view text, RegistryFile& out)
{
    RegistryFile parsed;
    Values* current = nullptr;
    bool headerSeen = false;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty() || line.front() == ';') continue;
        if (!headerSeen) {
            if (line != kHeader) return false;
            headerSeen = true;
        } else if (line.front() == '[') {
            if (!line.ends_with(']')) return false;
            const std::string_view key = line.substr(1, line.size() - 2);
            if (!isValidKey(key)) return false;
            current = &parsed.keys_[std::string(key)];
        } else {
            std::string name;
            RegistryValue value;
            if (!current || !parseValueLine(line, name, value)) return false;
            (*current)[name] = std::move(value);
        }
    }
    if (!headerSeen) return false;
    out = std::move(parsed);
    return true;
}

HRESULT RegistryFile::load(const std::filesystem::path& path, RegistryFile& out)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error)) return error ? REGDB_E_READREGDB : HRESULT_FILE_NOT_FOUND;
    std::ifstream file(path, std::ios::binary);
    if (!file) return REGDB_E_READREGDB;
    std::ostringstream content;
    content << file.rdbuf();
    if (file.bad()) return REGDB_E_READREGDB;
    return parse(content.str(), out) ? S_OK : REGDB_E_INVALIDVALUE;
}

std::string RegistryFile::text() const
{
    std::string out(kHeader);
    out += '\n';
    for (const auto& [key, values] : keys_) {
        out += "\n[" + key + "]\n";
        for (const auto& [name, value] : values) {
            if (name.empty()) {
                out += '@';
            } else {
                appendQuoted(out, name);
            }
            out += '=';
            if (const auto* number = std::get_if<uint32_t>(&value)) {
                char digits[16];
                std::snprintf(digits, sizeof digits, "dword:%08X", *number);
                out += digits;
            } else {
                appendQuoted(out, std::get<std::string>(value));
            }
            out += '\n';
        }
    }
    return out;
}

HRESULT RegistryFile::save(const std::filesystem::path& path) const
{
    std::error_code error;
    if (path.has_parent_path()) std::filesystem::create_directories(path.parent_path(), error);
    if (error) return REGDB_E_WRITEREGDB;
    // A name of this process beside the target, so the rename stays within one file system.
    std::filesystem::path temporary = path;
    temporary += ".tmp." + std::to_string(::getpid());
    if (!writeDurably(temporary, text())) {
        std::filesystem::remove(temporary, error);
        return REGDB_E_WRITEREGDB;
    }
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::filesystem::remove(temporary, error);
        return REGDB_E_WRITEREGDB;
    }
    return S_OK;
}

bool RegistryFile::createKey(std::string_view key)
{
    if (!isValidKey(key)) return false;
    if (keys_.find(key) == keys_.end()) keys_.emplace(std::string(key), Values{});
    return true;
}

bool RegistryFile::setValue(std::string_view key, std::string_view name, RegistryValue value)
{
    if (!createKey(key)) return false;
    keys_.find(key)->second[std::string(name)] = std::move(value);
    return true;
}

bool RegistryFile::removeTree(std::string_view key)
{
    return std::erase_if(keys_, [&](const auto& entry) { return isAtOrUnder(entry.first, key); }) > 0;
}

bool RegistryFile::hasKey(std::string_view key) const
{
    // A key exists while it or a key under it is written.
    return std::any_of(keys_.begin(), keys_.end(), [&](const auto& entry) { return isAtOrUnder(entry.first, key); });
}

const RegistryValue* RegistryFile::value(std::string_view key, std::string_view name) const
{
    const auto entry = keys_.find(key);
    if (entry == keys_.end()) return nullptr;
    const auto found = entry->second.find(name);
    return found == entry->second.end() ? nullptr : &found->second;
}

std::optional<std::string> RegistryFile::text(std::string_view key, std::string_view name) const
{
    const RegistryValue* found = value(key, name);
    if (!found) return std::nullopt;
    const auto* text = std::get_if<std::string>(found);
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

}  // namespace qx::com
