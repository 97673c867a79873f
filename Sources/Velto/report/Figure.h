// A figure of the report.
#pragma once

#include <string>

namespace velto {

struct Figure {
  std::string drawing; // SVG; empty if there is nothing to draw
  std::string caption; // what it shows, in words, without markup
};

} // namespace velto
