// Private-profile (INI) functions of the host: the settings file and the comparison log are written with them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace platform {

// Section and key names are compared without regard to case. A missing file, section or key yields the
// default. The value is cut to bufferChars - 1 UTF-16 units, as a fixed buffer of that size would.
std::string getPrivateProfileString(std::string_view section, std::string_view key, std::string_view defaultValue,
                                    std::size_t bufferChars, const std::string& path);
// The value read from its leading decimal digits (optional sign); a value that is not a number reads 0,
// a missing or empty one gives the default.
int getPrivateProfileInt(std::string_view section, std::string_view key, int defaultValue, const std::string& path);
// Replaces the key's value in place, or appends the key to its section, or appends the section when missing.
// The file is written whole or not at all; false when it could not be written (the old file stays).
bool writePrivateProfileString(std::string_view section, std::string_view key, std::string_view value,
                               const std::string& path);
// The same for many keys of one section in one write: the result equals that of one call per key, in order.
bool writePrivateProfileStrings(std::string_view section,
                                const std::vector<std::pair<std::string, std::string>>& entries,
                                const std::string& path);

}  // namespace platform
