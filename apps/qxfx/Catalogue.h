#pragma once
// The catalogue as the effect host reports it, gathered for display, with the table of
// each effect's parameters.
#include "effects/ParamTable.h"

#include <string>
#include <vector>

namespace qx::qxfx {

struct CatalogueEntry {
    int index = 0;
    int id = 0;
    std::string name;  // UTF-8, empty for effects without a display name
    int category = 0;
    std::string categoryName;
    bool hasDialog = false;
    std::string defaults;    // the parameter text of the defaults
    bool needsPack = false;  // plays content of the data path (scenes, animations)
    std::string source;      // the pack's Source it plays by default; empty: none
    ParamTable params;       // what each value of the list means
};

/// Every row of the effect table, the external filter included, asked of a new host.
std::vector<CatalogueEntry> readCatalogue();

}  // namespace qx::qxfx
