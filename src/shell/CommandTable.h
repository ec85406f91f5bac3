// The module's command table: the 25 commands of the group LDVkAcadCompareDwg10, the test that guards the
// commands of a comparison, the step every compare command runs first, and the commands' handlers.
#pragma once

#include <span>
#include <string_view>

inline constexpr const char* kCommandGroup = "LDVkAcadCompareDwg10";

struct ShellCommand {
  const char* localName;
  int flags;
  void (*handler)();
};

// The table in registration order; the global name of each is its local name behind an underscore.
std::span<const ShellCommand> CommandTable();
// Registers the table in the group and the result palette with the runs; false when the host refuses a
// name (the rest are still tried). Removing takes both away, and the palette set with them.
bool RegisterCommandTable();
void RemoveCommandTable();

// The guarded test, in order: either drawing of the comparison absent, silently false; entities hidden,
// "先还原所有实体,才能进行此操作" and false; comparison ended, "非比图环境，请选择要比较的图纸" and false;
// else true.
bool GuardedTest();
// The compare-ended test alone: "非比图环境，请选择要比较的图纸" and false once the comparison has ended.
bool CompareEndedTest();
// Run first by VkCompareFile, VKOpenDwgFiles and VkEndCompare: while no result is ready and the views are
// kept in step, cancels what runs in both drawings and runs ShowAll there (destination first). Always true.
bool PreCommandStep();
// The text the pre-command step queues to each drawing.
inline constexpr std::string_view kShowAllCommandText = "\x03ShowAll\n ";

// The handlers that do more than forward.
void VkEndCompare();
void VKShowAll();
