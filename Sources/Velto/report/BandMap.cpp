#include "BandMap.h"

#include "Bands.h"
#include "Phrases.h"
#include "Plot.h"
#include "Progress.h"
#include "StyleSheet.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velto {

namespace {

constexpr double plotHeight = 165;
constexpr double hitOctaves = 1.0 / 3;
constexpr std::array<std::size_t, 5> labelled{0, 8, 14, 20, 26};

std::string nameOf(const BandAnalysis& band) {
  return Bands::label(Bands::centres.at(static_cast<std::size_t>(band.index)));
}

std::vector<PlotTick> bandTicks() {
  std::vector<PlotTick> ticks;
  for (const std::size_t index : labelled)
    ticks.push_back(
        {.value = static_cast<double>(index), .label = Bands::label(Bands::centres.at(index))});
  return ticks;
}

std::string draw(std::span<const BandAnalysis> bands, const std::string& caption) {
  double most = Progress::fullScaleOctaves;
  for (const BandAnalysis& band : bands)
    most = std::max({most, band.meanErrorOct, band.meanError ? band.meanError->upper : 0.0});
  most = std::min(most, 9.0); // more octaves than the drill has
  Plot plot("Weakness map", caption, plotHeight,
            {.lowest = -0.5,
             .highest = static_cast<double>(bands.size()) - 0.5,
             .label = "centre of the band (Hz); above the bars, the number of answers",
             .ticks = bandTicks()},
            {.lowest = 0,
             .highest = most * 1.25,
             .label = "mean error (octaves)",
             .ticks = evenTicks(0, most * 1.25, 4)});
  const double pitch = (plot.right() - plot.left()) / static_cast<double>(bands.size());
  for (const BandAnalysis& band : bands) {
    const double centre = plot.x(static_cast<double>(band.index));
    double above = plot.bottom();
    if (band.answers > 0) {
      const double top = std::min(plot.y(band.meanErrorOct), plot.bottom() - 2);
      plot.rect(StyleSheet::weaknessClass(band.meanErrorOct), centre - pitch / 2 + 1, top,
                pitch - 2, plot.bottom() - top,
                nameOf(band) + " Hz: " + Phrases::octaves(band.meanErrorOct) + " octaves over " +
                    Phrases::counted(band.answers, "answer"));
      above = top;
      if (band.meanError) {
        plot.line("whisker", centre, plot.y(band.meanError->lower), centre,
                  plot.y(band.meanError->upper));
        above = std::min(above, plot.y(band.meanError->upper));
      }
    }
    plot.uprightLabel("count", centre + 2.8, above - 3, "start", std::to_string(band.answers));
  }
  plot.line("guess", plot.left(), plot.y(hitOctaves), plot.right(), plot.y(hitOctaves));
  return plot.finish();
}

} // namespace

Figure BandMap::of(std::span<const BandAnalysis> bands) {
  const BandAnalysis* weakest = nullptr;
  std::int64_t answers = 0;
  std::size_t answered = 0;
  for (const BandAnalysis& band : bands) {
    answers += band.answers;
    answered += band.answers > 0 ? 1 : 0;
    if (band.answers >= StyleSheet::answersToNameABand &&
        (weakest == nullptr || band.meanErrorOct > weakest->meanErrorOct))
      weakest = &band;
  }
  if (answers == 0)
    return {.drawing = {}, .caption = "No answers in the frequency drill yet."};
  std::string caption = "Mean error in " + std::to_string(answered) + " of " +
                        std::to_string(bands.size()) + " bands. ";
  if (weakest != nullptr)
    caption += "The weakest is " + nameOf(*weakest) +
               " Hz: " + Phrases::octaves(weakest->meanErrorOct) + " octaves over " +
               Phrases::counted(weakest->answers, "answer") + ". ";
  caption += "Dashed: a third of an octave, the largest error of a hit. Vertical lines: 95 % "
             "intervals, from 5 answers on.";
  return {.drawing = draw(bands, caption), .caption = caption};
}

} // namespace velto
