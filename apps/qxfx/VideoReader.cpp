#include "apps/qxfx/VideoReader.h"

namespace qx::qxfx {

namespace {

CommandError readError(const std::string& path, const std::string& what)
{
    return CommandError("'" + path + "': " + what);
}

}  // namespace

std::string mediaUrl(const std::string& path, bool output)
{
    if (path == "-") return output ? "pipe:1" : "pipe:0";
    // A file name with a colon would read as a protocol ("c:clip.mp4").
    return path.find(':') != std::string::npos && path.find('/') == std::string::npos ? "file:" + path : path;
}

VideoReader::VideoReader(const std::string& path, int threads, const InputFormat& format) : path_(path)
{
    std::string error;
    reader_ = video::MovieReader::open(mediaUrl(path, false), threads, &error, format);
    if (!reader_) throw readError(path == "-" ? "standard input" : path, error);
}

std::vector<double> VideoReader::frameTimes(const std::string& path)
{
    return path == "-" ? std::vector<double>{} : video::MovieReader::frameTimes(mediaUrl(path, false));
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
