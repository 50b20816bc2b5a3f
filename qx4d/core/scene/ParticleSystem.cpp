#include "qx4d/core/scene/ParticleSystem.h"

#include "qx4d/core/TextReader.h"

namespace qx4d {

bool ParticleSystem::ReadOwnKey(const String& key, TextReader& reader, Scene& /*scene*/, bool& /*refuse*/)
{
    if (key != u"FileName") return false;
    reader.ReadValue(fileName);
    return true;
}

}  // namespace qx4d
