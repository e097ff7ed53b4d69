// The toolbar's icons, drawn with QPainter: small glyphs, one for each key of the
// toolbar ("FILENEW", "MODELCALC", "WINDOWZOOMIN", ...).
#pragma once

#include <QIcon>
#include <string>

namespace tarno {

// The icon of a toolbar key; a plain square for an unknown key.
QIcon ToolbarIcon(const std::string& key);

}  // namespace tarno
