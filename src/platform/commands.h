// The host's command stack: commands registered in named groups.
#pragma once

#include <functional>
#include <string_view>

#include "platform/database.h"

namespace platform {

// Command flags, with the host's values.
enum CommandFlags : int {
  kCmdModal = 0x1,
  kCmdTransparent = 0x2,
  kCmdSession = 0x200000,  // runs in the application context and may switch documents
};

using CommandFunction = std::function<void()>;

// addCommand: registers a command in a group. The global name is typed with a leading underscore
// ("_NAME"), the local name without; both are matched without regard to case. eInvalidInput when a name is
// empty or either name is already taken in the group.
ErrorStatus addCommand(std::string_view group, std::string_view globalName, std::string_view localName, int flags,
                       CommandFunction function);
// removeGroup: removes every command of a group; eInvalidInput when there is no such group.
ErrorStatus removeGroup(std::string_view group);

}  // namespace platform
