// The scale of a drill and its layout on the page.
#pragma once

#include "Drill.h"
#include "Scales.h"

#include <optional>
#include <string>
#include <variant>

namespace velto {

// A FrequencyScale or a DecibelScale. A plain value. Any thread.
class PageScale {
public:
  // The scale that a drill is answered on; nullopt if it is answered with a slot.
  [[nodiscard]] static std::optional<PageScale> of(Drill drill);

  [[nodiscard]] double lowest() const;
  [[nodiscard]] double highest() const;
  [[nodiscard]] double valueAt(double x, double width) const;
  [[nodiscard]] double nearest(double value) const;
  [[nodiscard]] double moved(double value, Move move) const;
  [[nodiscard]] std::string text(double value) const;
  [[nodiscard]] std::string spoken(double value) const;

  struct Shown {
    double value = 0;
    std::optional<double> truth;
    double width = 0;      // of the strip
    double answerChip = 0; // widths of the markers' chips
    double truthChip = 0;
    double devicePixelRatio = 1;
  };
  // Where everything on the strip is, as JSON.
  [[nodiscard]] std::string layout(const Shown& shown) const;

private:
  using Scale = std::variant<FrequencyScale, DecibelScale>;
  explicit PageScale(Scale scale) : scale_(scale) {}
  [[nodiscard]] double position(double value, double width) const;

  Scale scale_;
};

} // namespace velto
