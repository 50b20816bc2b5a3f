#include "platform/swf/Outline.h"

#include <bit>
#include <optional>
#include <unordered_map>

namespace qx::swf {

namespace {

// Points are compared exactly: edges of one outline share their end points bit for bit.
struct PointKey {
    uint64_t x;
    uint64_t y;
    explicit PointKey(Point p) : x(std::bit_cast<uint64_t>(p.x + 0.0)), y(std::bit_cast<uint64_t>(p.y + 0.0)) {}
    friend bool operator==(const PointKey&, const PointKey&) = default;
};

struct PointHash {
    size_t operator()(const PointKey& key) const
    {
        return std::hash<uint64_t>()(key.x * 0x9E3779B97F4A7C15ull ^ key.y);
    }
};

Segment segmentOf(const Edge& edge, bool reversed)
{
    if (reversed) return {edge.to, edge.control, edge.from, edge.curved};
    return {edge.from, edge.control, edge.to, edge.curved};
}

// Joins the segments of one fill style into contours.
std::vector<Contour> joinContours(const std::vector<Segment>& segments)
{
    std::unordered_map<PointKey, std::vector<size_t>, PointHash> startingAt;
    for (size_t i = segments.size(); i-- > 0;) startingAt[PointKey(segments[i].from)].push_back(i);
    std::vector<bool> used(segments.size(), false);
    const auto takeFrom = [&](Point p) -> std::optional<size_t> {
        const auto found = startingAt.find(PointKey(p));
        if (found == startingAt.end()) return std::nullopt;
        auto& candidates = found->second;
        while (!candidates.empty() && used[candidates.back()]) candidates.pop_back();
        if (candidates.empty()) return std::nullopt;
        const size_t next = candidates.back();
        candidates.pop_back();
        return next;
    };
    std::vector<Contour> contours;
    for (size_t first = 0; first < segments.size(); ++first) {
        if (used[first]) continue;
        used[first] = true;
        Contour contour{segments[first]};
        const PointKey start(segments[first].from);
        while (!(PointKey(contour.back().to) == start)) {
            const auto next = takeFrom(contour.back().to);
            if (!next) break;  // an outline that never closes: filled as if closed
            used[*next] = true;
            contour.push_back(segments[*next]);
        }
        contours.push_back(std::move(contour));
    }
    return contours;
}

GroupOutline outlineOf(const StyleGroup& group)
{
    GroupOutline outline;
    std::vector<std::vector<Segment>> fillSegments(group.fills.size());
    outline.lines.resize(group.lines.size());
    const Edge* previous = nullptr;
    for (const Edge& edge : group.edges) {
        // Indices past the style arrays are ignored, as a style that does not exist.
        if (edge.fill1 >= 1 && edge.fill1 <= fillSegments.size())
            fillSegments[edge.fill1 - 1].push_back(segmentOf(edge, false));
        if (edge.fill0 >= 1 && edge.fill0 <= fillSegments.size())
            fillSegments[edge.fill0 - 1].push_back(segmentOf(edge, true));
        if (edge.line >= 1 && edge.line <= outline.lines.size()) {
            auto& runs = outline.lines[edge.line - 1];
            const bool continues =
                previous && previous->line == edge.line && previous->to == edge.from && !runs.empty();
            if (!continues) runs.emplace_back();
            runs.back().push_back(segmentOf(edge, false));
        }
        previous = &edge;
    }
    outline.fills.reserve(fillSegments.size());
    for (const auto& segments : fillSegments) outline.fills.push_back(joinContours(segments));
    return outline;
}

}  // namespace

std::vector<GroupOutline> buildOutlines(const Shape& shape)
{
    std::vector<GroupOutline> outlines;
    outlines.reserve(shape.groups.size());
    for (const StyleGroup& group : shape.groups) outlines.push_back(outlineOf(group));
    return outlines;
}

}  // namespace qx::swf
