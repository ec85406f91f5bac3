// The header variables of an R13+ drawing that the reader needs: the current space, base point, extents.
#pragma once

#include <string>

#include "platform/headless/dwg_bits.h"
#include "platform/headless/dwg_container.h"

namespace headless {

// The variables are stored in one fixed order; these are read on the way to the model space extents.
struct DwgHeaderVariables {
  bool tilemode = true;
  double ltscale = 1.0;
  DwgPoint3 paperInsbase, paperExtmin, paperExtmax;
  DwgPoint3 insbase, extmin, extmax;  // model space
};

// Reads the header variables section as far as the model space extents. False with error set when the
// section is missing or ends before them.
bool readDwgHeaderVariables(const DwgSections& sections, DwgHeaderVariables& out, std::string& error);

}  // namespace headless
