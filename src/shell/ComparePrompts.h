// The prompts for the compare area and the base point of a compared drawing.
#pragma once

#include "engine/DrawingRecord.h"

inline constexpr const char* kAreaFirstPrompt = "\n指定比较范围\n指定范围第一个角点<全图>：";
inline constexpr const char* kAreaCornerPrompt = "指定对角点：\n";
inline constexpr const char* kBasePointPrompt = "\n指定比较基点<原点>：";

// Makes the record's document current and asks for the compare area there. Anything but a point at the
// first prompt keeps the whole drawing (both corners at the origin); two corners that coincide within
// 0.0001 ask again; anything but a point for the opposite corner leaves the area as it was. The corners
// are stored as the per-axis minimum and maximum of the two points.
void AskCompareArea(CDrawingRecord& record);
// Makes the record's document current and asks for the base point there; Enter (or anything but a point)
// keeps the origin.
void AskBasePoint(CDrawingRecord& record);
