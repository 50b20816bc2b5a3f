#pragma once
// The registry of classes on Linux: a text file that registration writes and that hosts
// read to find the server of a class. Keys are paths with backslashes, as under
// HKEY_CLASSES_ROOT ("CLSID\{...}\InprocServer32"), compared without regard to ASCII
// case; each key holds named values, text or 32-bit numbers, the unnamed one being the
// key's default. The file:
//
//     QXCOM Registry 1
//     ; a comment
//     [CLSID\{0E09660B-CA83-487F-A9DC-024B3BB6B271}\InprocServer32]
//     @="/usr/lib/x86_64-linux-gnu/libqxdynamiceffects.so.5"
//     "ThreadingModel"="Both"
//     "Merit"=dword:00200000
//
// Text is UTF-8 between quotes, with \\, \" and \xHH (control bytes) escaped. A file that
// breaks this form is refused whole, never rewritten.
#include "platform/com/HResult.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace qx::com {

using RegistryValue = std::variant<std::string, uint32_t>;

class RegistryFile {
public:
    /// $XDG_DATA_HOME/qxcom/classes.reg, or ~/.local/share/qxcom/classes.reg without it.
    static std::filesystem::path defaultPath();

    /// Reads `path`: HRESULT_FILE_NOT_FOUND when it does not exist, REGDB_E_READREGDB
    /// when it cannot be read, REGDB_E_INVALIDVALUE when it is not registry text.
    static HRESULT load(const std::filesystem::path& path, RegistryFile& out);
    /// Parses registry text; false, with `out` unchanged, when it is not well formed.
    static bool parse(std::string_view text, RegistryFile& out);

    /// Writes the whole registry beside `path` and renames it over `path`, so a reader
    /// sees the old file or the new one, never a part; creates the folder if needed.
    /// REGDB_E_WRITEREGDB when the file cannot be written.
    HRESULT save(const std::filesystem::path& path) const;
    std::string text() const;

    /// Creates `key` (with no value) if it is not there; false for a malformed path.
    bool createKey(std::string_view key);
    /// Sets a value of `key`, creating the key; `name` empty for the default value.
    bool setValue(std::string_view key, std::string_view name, RegistryValue value);
    /// Removes `key` and every key under it; false when there was none.
    bool removeTree(std::string_view key);

    bool hasKey(std::string_view key) const;
    const RegistryValue* value(std::string_view key, std::string_view name = {}) const;
    /// A text value, or nothing when it is missing or a number.
    std::optional<std::string> text(std::string_view key, std::string_view name = {}) const;
    size_t keyCount() const { return keys_.size(); }

    /// A well-formed key path: non-empty parts between backslashes, no brackets, no
    /// control bytes.
    static bool isValidKey(std::string_view key);

private:
    struct CaseLess {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const;
    };
    using Values = std::map<std::string, RegistryValue, CaseLess>;

    std::map<std::string, Values, CaseLess> keys_;
};

}  // namespace qx::com
