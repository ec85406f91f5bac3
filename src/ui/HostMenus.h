// The host application's menu groups in its automation model: groups, their toolbars and toolbar items.
#pragma once

#include "ui/OpenDrawings.h"

// The application's "MenuGroups" collection:
// - MenuGroups: "Count" (property), "Item" (method: an index from 0 or a group name) gives a menu group.
// - MenuGroup: "Name" (property), "Toolbars" (property).
// - Toolbars: "Count" (property), "Item" (method: an index from 0 or a toolbar name), "Add" (method: a name).
// - Toolbar: "Name" (property), "Visible" (property, get and put, 0 or 1), "Count" (property), "Item"
//   (method: an index from 0 or a caption), "Delete" (method), "AddToolbarButton" (method: index, name, help string,
//   macro; an index past the end appends) gives the new item.
// - ToolbarItem: "Name", "HelpString", "Macro" (properties), "SetBitmaps" (method: small and large picture
//   paths).
// An object whose host toolbar or group is gone answers every call with kEFail.
CAutomationObject& HostMenuGroups();
