// Reads an R13 or later DWG file into the headless database storage, through the DXF reader's records.
#pragma once

#include <string>

#include "platform/database.h"
#include "platform/headless/dxf_data.h"

namespace headless {

// Fills data from the DWG file at path; false with report.error set when the file cannot be read, or
// holds an entity of a type not decoded yet (named with its handle: leaving it out would show it deleted).
bool readDwg(const std::string& path, platform::DatabaseData& data, platform::ReadReport& report);

}  // namespace headless
