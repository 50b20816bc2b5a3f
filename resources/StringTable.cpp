#include "resources/StringTable.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qx::resources {

namespace {

// Sorted by id. The two blanks of string 101 are part of the text.
constexpr std::pair<int, std::u16string_view> kStrings[] = {
    {101, u"Déplacement, zoom  -"},
    {102, u"Déplacement, zoom +"},
    {103, u"Déplacement, de gauche à droite"},
    {104, u"Déplacement, de droite à gauche"},
    {105, u"Déplacement, de haut en bas"},
    {106, u"Déplacement, de bas en haut"},
    {107, u"Déplacement, libre"},
    {108, u"Apparition en fondu"},
    {109, u"Disparition en fondu"},
    {110, u"Film ancien"},
    {111, u"Spectre de couleurs"},
    {112, u"Coloriser"},
    {113, u"Puzzle"},
    {114, u"Film ancien 2"},
    {115, u"Déplacement 3D"},
    {116, u"Cube"},
    {117, u"Drapeau"},
    {118, u"Gouttes d'eau"},
    {119, u"Battement de coeur"},
    {122, u"Standard"},
    {123, u"Avancé"},
    {124, u"Particules"},
    {125, u"Saturation, +"},
    {126, u"Saturation, -"},
    {127, u"Animations"},
    {128, u"Objets animés"},
};

}  // namespace

std::optional<std::u16string_view> LoadString(int id)
{
    const auto it = std::ranges::lower_bound(kStrings, id, {}, &std::pair<int, std::u16string_view>::first);
    if (it == std::end(kStrings) || it->first != id) return std::nullopt;
    return it->second;
}

}  // namespace qx::resources
