// A drawing with two axes, in SVG for a page of HTML.
#pragma once

#include "Markup.h"

#include <string>
#include <vector>

namespace velto {

struct PlotTick {
  double value = 0;
  std::string label;
};

// From `lowest` to `highest`, which differ.
struct PlotAxis {
  double lowest = 0;
  double highest = 1;
  std::string label; // with the unit
  std::vector<PlotTick> ticks;
};

// Ticks at multiples of 1, 2 or 5 times a power of ten, at most `most` + 1 of them, with as many
// decimals as they need.
[[nodiscard]] std::vector<PlotTick> evenTicks(double lowest, double highest, int most);

// Opens a drawing of SVG. The title names it, the description says what it shows, for readers who
// do not see it.
void beginDrawing(Markup& markup, double width, double height, const std::string& title,
                  const std::string& description);

// The colours are the style sheet's, by class. Lengths are in the drawing's own unit, of which it
// is `drawingWidth` wide; the page scales it. One object belongs to one thread.
class Plot {
public:
  static constexpr double drawingWidth = 360;

  // See beginDrawing.
  Plot(const std::string& title, const std::string& description, double height, PlotAxis x,
       PlotAxis y);

  // Positions of values; clamped to the area between the axes.
  [[nodiscard]] double x(double value) const;
  [[nodiscard]] double y(double value) const;
  [[nodiscard]] double left() const { return left_; }
  [[nodiscard]] double right() const { return drawingWidth - margin; }
  [[nodiscard]] double top() const { return topMargin; }
  [[nodiscard]] double bottom() const { return height_ - bottomMargin; }

  // What is drawn later lies above.
  void line(const std::string& className, double x1, double y1, double x2, double y2);
  void rect(const std::string& className, double x, double y, double width, double height,
            const std::string& tip = {});
  void circle(const std::string& className, double x, double y, double radius,
              const std::string& tip);
  // `anchor`: "start", "middle" or "end".
  void label(const std::string& className, double x, double y, const std::string& anchor,
             const std::string& text);
  // The same, read from below to above.
  void uprightLabel(const std::string& className, double x, double y, const std::string& anchor,
                    const std::string& text);

  struct Point {
    double x = 0;
    double y = 0;
  };
  void polyline(const std::string& className, const std::vector<Point>& points);

  // The drawing. Call once.
  [[nodiscard]] std::string finish();

private:
  static constexpr double margin = 10, topMargin = 10, bottomMargin = 36;

  void drawAxes();

  double height_;
  PlotAxis x_, y_;
  double left_;
  Markup markup_;
};

} // namespace velto
