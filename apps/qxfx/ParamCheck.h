#pragma once
// Checks a parameter text of the command line against the table of the effect it is for,
// before the host sees it: the host takes any text as an editor hands it (a stray letter
// reads as 0, a missing value as 0), which turns a typing slip into black frames. A bad
// text is refused with a message that names the slot and what it means.
#include "effects/ParamTable.h"

#include <string>

namespace qx::qxfx {

/// CommandError naming the first problem of `text` for an effect of table `table`: a
/// value that is not a whole number, a value without its ';', too many or too few values,
/// a value out of its slot's range. An empty table (an effect that leaves its values to
/// the editor) checks only the form.
void checkParamText(const std::string& text, ParamTable table);

/// The table of effect `effectId`; empty for an id the catalogue lacks.
ParamTable paramTableOf(long effectId);

}  // namespace qx::qxfx
