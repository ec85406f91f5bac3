// Reads an R13 or later DWG file into the headless database storage, through the DXF reader's records.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/database.h"
#include "platform/headless/dxf_data.h"

namespace headless {

// Fills data from the DWG file at path; false with report.error set when the file cannot be read, or
// holds an entity of a type not decoded yet (named with its handle: leaving it out would show it deleted).
bool readDwg(const std::string& path, platform::DatabaseData& data, platform::ReadReport& report);
// The same for a file already in memory; fileName names it in messages and in data.
bool readDwg(std::vector<std::uint8_t> bytes, std::string_view fileName, platform::DatabaseData& data,
             platform::ReadReport& report);

}  // namespace headless
