// Difference records: the messages of a record's text.
#include "comparers/DiffRecord.h"

std::vector<std::string_view> CDiffType::messages() const {
  std::vector<std::string_view> out;
  const std::string_view rest = std::string_view(text).substr(std::min<std::size_t>(descriptionLength, text.size()));
  // A message ends at a comma outside brackets; a block's contents "<label>[...]" end with their bracket.
  int depth = 0;
  std::size_t start = 0;
  for (std::size_t i = 0; i < rest.size(); ++i) {
    const char c = rest[i];
    if (c == '[') {
      ++depth;
    } else if (c == ']' && depth > 0) {
      if (--depth == 0) {
        out.push_back(rest.substr(start, i + 1 - start));
        start = i + 1;
      }
    } else if (c == ',' && depth == 0) {
      if (i > start) out.push_back(rest.substr(start, i - start));
      start = i + 1;
    }
  }
  if (start < rest.size()) out.push_back(rest.substr(start));
  return out;
}
