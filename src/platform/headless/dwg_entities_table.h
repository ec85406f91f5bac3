// What the two parts of the table decoder share: colours and values as tables store them, and the table
// content of R2010 and later drawings.
#pragma once

#include <string>

#include "platform/headless/dwg_entities.h"

namespace headless {

// A colour of a table's data, whatever the drawing's release: index, value and flags as R2004 stores
// colours, the names when the flags say so. Returns the index DXF gives.
int readDwgTableColor(DwgObjectReader& o, std::string& scratch);

// A value (R2007 and later): its flags, type and data, unit type, format and shown text, as the groups
// DXF gives it between "301 CELL_VALUE" and "304 ACVALUE_END". An object's handle (type 64) is read from
// the handle stream when handleNow, else a slot is left for it in context.slots. False for damage and for
// the types whose data has no known layout.
bool readDwgTableValue(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context, bool handleNow);

// The table of an R2010 or later drawing: its block reference part, then the table content stored inline,
// then its break data; the groups are those DXF gives, cells in the layout older releases store.
bool decodeDwgTableContent(DwgObjectReader& o, DwgTagList& out, DwgDecodeContext& context);

}  // namespace headless
