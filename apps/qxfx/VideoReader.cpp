#include "apps/qxfx/VideoReader.h"

namespace qx::qxfx {

namespace {

CommandError readError(const std::string& path, const std::string& what) { return CommandError("'" + path + "': " + what); }

}  // namespace

VideoReader::VideoReader(const std::string& path, int threads) : path_(path)
{
    std::string error;
    reader_ = video::MovieReader::open(path, threads, &error);
    if (!reader_) throw readError(path, error);
}

bool VideoReader::read(Frame& frame)
{
    switch (reader_->readNext(frame.samples)) {
    case video::MovieReader::Read::Frame:
        return true;
    case video::MovieReader::Read::End:
        return false;
    case video::MovieReader::Read::Error:
        break;
    }
    throw readError(path_, reader_->lastError());
}

}  // namespace qx::qxfx
