#include "qx4d/content/Filter.h"

#include "qx4d/content/LDRBloom.h"
#include "qx4d/content/ReadFloatOrEnvelope.h"
#include "qx4d/core/TextReader.h"

namespace qx4d {

void Filter::Update(float time, float /*timeStep*/)
{
    for (const auto& envelope : envelopes) envelope->Update(time);
}

void DistortFilter::Load(TextReader& reader)
{
    String key;
    while (reader.NextToken(key, true) && key != u"}" && key != u"{}") {
        if (key == u"{") continue;
        if (key == u"Center") {
            // Two numbers on the key's line; a missing one gives 0.
            centerX = reader.NextToken(false) ? reader.ToFloat() : 0.0f;
            centerY = reader.NextToken(false) ? reader.ToFloat() : 0.0f;
        } else if (key == u"CenterX") {
            ReadFloatOrEnvelope(reader, centerX, envelopes);
        } else if (key == u"CenterY") {
            ReadFloatOrEnvelope(reader, centerY, envelopes);
        } else if (key == u"Radius") {
            ReadFloatOrEnvelope(reader, radius, envelopes);
        } else {
            LoadKey(key, reader);
        }
        reader.SkipLine();
    }
}

bool Twirl::LoadKey(const String& key, TextReader& reader)
{
    if (key != u"Angle") return false;
    ReadFloatOrEnvelope(reader, angle, envelopes);
    return true;
}

std::unique_ptr<Filter> MakeFilter(const String& name)
{
    if (name == u"Negative") return std::make_unique<Negative>();
    if (name == u"Sepia") return std::make_unique<Sepia>();
    if (name == u"LDRBloom") return std::make_unique<LDRBloom>();
    if (name == u"ColorTransform") return std::make_unique<ColorTransform>();
    if (name == u"Twirl") return std::make_unique<Twirl>();
    if (name == u"Explode") return std::make_unique<Explode>();
    if (name == u"Wave") return std::make_unique<Wave>();
    return nullptr;
}

}  // namespace qx4d
