#include "apps/qxfx/VideoReader.h"

namespace qx::qxfx {

namespace {

CommandError readError(const std::string& path, const std::string& what)
{
    return CommandError("'" + path + "': " + what);
}

}  // namespace

VideoReader::VideoReader(const std::string& path, int threads) : path_(path)
{
    std::string error;
    reader_ = video::MovieReader::open(path, threads, &error);
    if (!reader_) throw readError(path, error);
}

bool VideoReader::read(Frame& frame) { return outcome(reader_->readNext(frame.samples)); }

bool VideoReader::readYv12(std::span<uint8_t> planes)
{
    if (planes.size() < yv12Size()) throw CommandError("a YV12 frame needs " + std::to_string(yv12Size()) + " bytes");
    return outcome(reader_->readNextYv12(planes));
}

// True for a frame, false at the end; a decoding error becomes a command error.
bool VideoReader::outcome(video::MovieReader::Read read) const
{
    switch (read) {
    case video::MovieReader::Read::Frame: return true;
    case video::MovieReader::Read::End: return false;
    case video::MovieReader::Read::Error: break;
    }
    throw readError(path_, reader_->lastError());
}

}  // namespace qx::qxfx
