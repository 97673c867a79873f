#include "Plot.h"

#include "Numbers.h"

#include <algorithm>
#include <cmath>

namespace velto {

namespace {

// Positions with a hundredth, without trailing zeros.
std::string position(double value) {
  std::string text = Numbers::fixed(value, 2);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.')
    text.pop_back();
  return text == "-0" ? "0" : text;
}

double share(double value, const PlotAxis& axis) {
  return std::clamp((value - axis.lowest) / (axis.highest - axis.lowest), 0.0, 1.0);
}

} // namespace

void beginDrawing(Markup& markup, double width, double height, const std::string& title,
                  const std::string& description) {
  markup.open("svg", {{"viewBox", "0 0 " + position(width) + " " + position(height)},
                      {"role", "img"},
                      {"preserveAspectRatio", "xMinYMid"}});
  // A reader that does not show the drawing takes its name and its description from these.
  markup.element("title", title).element("desc", description);
}

std::vector<PlotTick> evenTicks(double lowest, double highest, int most) {
  const double least = (highest - lowest) / most;
  double step = std::pow(10, std::floor(std::log10(least)));
  int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(least))));
  for (const double factor : {1.0, 2.0, 5.0, 10.0}) {
    if (step * factor >= least * (1 - 1e-9)) {
      if (factor == 10)
        decimals = std::max(0, decimals - 1);
      step *= factor;
      break;
    }
  }
  std::vector<PlotTick> ticks;
  for (double number = std::ceil(lowest / step); number * step <= highest * (1 + 1e-9); ++number)
    ticks.push_back({.value = number * step, .label = Numbers::fixed(number * step, decimals)});
  return ticks;
}

Plot::Plot(const std::string& title, const std::string& description, double height, PlotAxis x,
           PlotAxis y)
    : height_(height), x_(std::move(x)), y_(std::move(y)), left_(y_.ticks.empty() ? margin : 44) {
  beginDrawing(markup_, drawingWidth, height, title, description);
  drawAxes();
}

double Plot::x(double value) const {
  return left() + share(value, x_) * (right() - left());
}

double Plot::y(double value) const {
  return bottom() - share(value, y_) * (bottom() - top());
}

void Plot::drawAxes() {
  constexpr double tickLength = 4, textBelow = 15, textBeside = 4;
  for (const PlotTick& tick : y_.ticks) {
    line("grid", left(), y(tick.value), right(), y(tick.value));
    label("tick", left() - tickLength - 2, y(tick.value) + textBeside, "end", tick.label);
  }
  line("axis", left(), bottom(), right(), bottom());
  for (const PlotTick& tick : x_.ticks) {
    line("axis", x(tick.value), bottom(), x(tick.value), bottom() + tickLength);
    label("tick", x(tick.value), bottom() + textBelow, "middle", tick.label);
  }
  label("name", (left() + right()) / 2, height_ - 6, "middle", x_.label);
  if (!y_.label.empty())
    uprightLabel("name", 12, (top() + bottom()) / 2, "middle", y_.label);
}

void Plot::line(const std::string& className, double x1, double y1, double x2, double y2) {
  markup_.empty("line", {{"class", className},
                         {"x1", position(x1)},
                         {"y1", position(y1)},
                         {"x2", position(x2)},
                         {"y2", position(y2)}});
}

void Plot::rect(const std::string& className, double x, double y, double width, double height,
                const std::string& tip) {
  markup_.open("rect", {{"class", className},
                        {"x", position(x)},
                        {"y", position(y)},
                        {"width", position(width)},
                        {"height", position(height)}});
  if (!tip.empty())
    markup_.element("title", tip);
  markup_.close();
}

void Plot::circle(const std::string& className, double x, double y, double radius,
                  const std::string& tip) {
  markup_.open(
      "circle",
      {{"class", className}, {"cx", position(x)}, {"cy", position(y)}, {"r", position(radius)}});
  if (!tip.empty())
    markup_.element("title", tip);
  markup_.close();
}

void Plot::label(const std::string& className, double x, double y, const std::string& anchor,
                 const std::string& text) {
  markup_.element(
      "text",
      {{"class", className}, {"x", position(x)}, {"y", position(y)}, {"text-anchor", anchor}},
      text);
}

void Plot::uprightLabel(const std::string& className, double x, double y, const std::string& anchor,
                        const std::string& text) {
  markup_.element("text",
                  {{"class", className},
                   {"transform", "translate(" + position(x) + " " + position(y) + ") rotate(-90)"},
                   {"text-anchor", anchor}},
                  text);
}

void Plot::polyline(const std::string& className, const std::vector<Point>& points) {
  std::string text;
  for (const Point& point : points) {
    if (!text.empty())
      text += " ";
    text += position(point.x) + "," + position(point.y);
  }
  markup_.empty("polyline", {{"class", className}, {"points", text}});
}

std::string Plot::finish() {
  markup_.close();
  return markup_.finish();
}

} // namespace velto
