// Reads a DXF file into the headless database storage.
#pragma once

#include <string>

#include "platform/database.h"
#include "platform/headless/dxf_data.h"
#include "platform/headless/dxf_tokenizer.h"

namespace headless {

// Fills data from the DXF file at path; false with report.error set when the file cannot be read.
bool readDxf(const std::string& path, platform::DatabaseData& data, platform::ReadReport& report);
// Fills data from groups in DXF order, whichever file they come from (data.fileName and format set first).
bool readTagStream(TagSource& source, platform::DatabaseData& data, platform::ReadReport& report);

// The host's class of a stored entity, from its DXF name, its subclass markers and its flags.
platform::DbClass classifyEntity(const platform::DatabaseData& data, const platform::EntityRec& e);
// Whether the class of an entity of this DXF name depends on more than the name and the CLASSES section
// (its flags, its subclass markers, its owner).
bool classDependsOnGroups(std::string_view dxfName);

}  // namespace headless
