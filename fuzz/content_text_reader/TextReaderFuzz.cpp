// Feeds arbitrary bytes to the notation reader as a file, and reads them the way the
// scene readers do: keys, values, numbers, peeks and dropped lines.
#include "qx4d/core/TextReader.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace qx4d;
    auto bytes = std::make_unique<uint8_t[]>(size);
    if (size > 0) std::memcpy(bytes.get(), data, size);
    TextReader reader;
    if (!reader.SetBuffer(std::move(bytes), size)) return 0;
    String key;
    String value;
    while (reader.NextToken(key, true)) {
        if (key == u"Name") {
            reader.ReadValue(value);
        } else if (key == u"Position") {
            ReadFloat(reader);
            ReadInt(reader);
            ReadBool(reader);
        } else if (key == u"Peek") {
            const TextReader::Position start = reader.SaveCursor();
            reader.NextToken(value, true);
            reader.RestoreCursor(start);
        }
        std::vector<String> pieces;
        key.Split(u", ", pieces);
        reader.SkipLine();
    }
    return 0;
}
