#include "wrap3d/DataPath.h"

#include <mutex>

namespace qx {

namespace {

struct DataPaths {
    std::mutex lock;
    std::u16string buffer;
    std::u16string path;
};

DataPaths& dataPaths()
{
    static DataPaths paths;
    return paths;
}

}  // namespace

void SetDataPathBuffer(std::u16string_view path)
{
    auto& paths = dataPaths();
    std::lock_guard guard(paths.lock);
    // The buffer holds 260 units; a longer text is cut rather than written past it.
    paths.buffer = path.substr(0, kMaxDataPath - 1);
}

std::u16string DataPathBuffer()
{
    auto& paths = dataPaths();
    std::lock_guard guard(paths.lock);
    return paths.buffer;
}

void SetDataPath(std::u16string_view path)
{
    auto& paths = dataPaths();
    std::lock_guard guard(paths.lock);
    paths.path = path;
}

std::u16string DataPath()
{
    auto& paths = dataPaths();
    std::lock_guard guard(paths.lock);
    return paths.path;
}

}  // namespace qx
