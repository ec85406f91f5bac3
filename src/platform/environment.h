// Environment-string expansion of the host ("%APPDATA%" and the like).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

// Replaces every "%NAME%" by the variable's value; an unknown name stays as written. Fails when the
// result would not fit a buffer of bufferChars UTF-16 units (terminator included) or when APPDATA
// cannot be resolved. The headless host resolves APPDATA as $APPDATA when set, else $XDG_CONFIG_HOME,
// else "$HOME/.config".
bool expandEnvironmentStrings(std::string_view text, std::string& out, std::size_t bufferChars);

}  // namespace platform
