// A small JSON writer for the command line's machine-readable output.
#pragma once

#include <string>
#include <string_view>

namespace vkcompare {

// Appends s as a JSON string literal (UTF-8 kept, control characters escaped).
void appendJsonString(std::string& out, std::string_view s);

}  // namespace vkcompare
