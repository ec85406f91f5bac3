// Typed accessors of text, multiline text, attributes, dimensions, leaders, tolerances, tables.
#pragma once

// X(accessor name, kind): see accessors.h.
#define VK_ACCESSORS_TEXT(X)
