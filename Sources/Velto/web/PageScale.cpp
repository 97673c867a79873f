#include "PageScale.h"

#include "ChipLayout.h"
#include "DevicePixels.h"
#include "FatalError.h"
#include "JSONWriter.h"
#include "StripLayout.h"

namespace velto {

namespace {

struct Bar {
  double left = 0;
  ChipLayout::Place chip;
};

void append(JSON::Writer& json, std::string_view key, const std::optional<Bar>& bar) {
  if (!bar)
    return;
  json.key(key);
  json.beginObject();
  json.key("bar");
  json.real(bar->left);
  json.key("chipX");
  json.real(bar->chip.x);
  json.key("chipY");
  json.real(bar->chip.y);
  json.key("crosses");
  json.boolean(bar->chip.crosses);
  json.endObject();
}

} // namespace

std::optional<PageScale> PageScale::of(Drill drill) {
  switch (drill) {
  case Drill::frequency:
    return PageScale(frequencyScale);
  case Drill::level:
    return PageScale(levelScale);
  case Drill::dynamics:
    return PageScale(dynamicsScale);
  case Drill::polarity:
    return std::nullopt;
  }
  fatalError("unknown drill");
}

double PageScale::lowest() const {
  return std::visit([](const auto& scale) { return scale.lowest; }, scale_);
}

double PageScale::highest() const {
  return std::visit([](const auto& scale) { return scale.highest; }, scale_);
}

double PageScale::position(double value, double width) const {
  return std::visit([&](const auto& scale) { return scale.position(value, width); }, scale_);
}

double PageScale::valueAt(double x, double width) const {
  return std::visit([&](const auto& scale) { return scale.valueAt(x, width); }, scale_);
}

double PageScale::nearest(double value) const {
  return std::visit([&](const auto& scale) { return scale.nearest(value); }, scale_);
}

double PageScale::moved(double value, Move move) const {
  return std::visit([&](const auto& scale) { return scale.moved(value, move); }, scale_);
}

std::string PageScale::text(double value) const {
  return std::visit([&](const auto& scale) { return scale.text(value); }, scale_);
}

std::string PageScale::spoken(double value) const {
  return std::visit([&](const auto& scale) { return scale.spoken(value); }, scale_);
}

std::string PageScale::layout(const Shown& shown) const {
  const double width = shown.width, ratio = shown.devicePixelRatio;
  const double tickWidth = DevicePixels::wholeWidth(StripLayout::tickWidth, ratio);
  const double labelOffset =
      std::visit([](const auto& scale) { return scale.labelOffset; }, scale_);
  JSON::Writer json;
  json.beginObject();
  json.key("tickWidth");
  json.real(tickWidth);
  json.key("ticks");
  json.beginArray();
  for (const ScaleTick& tick :
       std::visit([](const auto& scale) { return scale.ticks(); }, scale_)) {
    const double x = position(tick.value, width);
    json.beginObject();
    json.key("left");
    json.real(StripLayout::tickLeft(x, tickWidth, width, ratio));
    json.key("height");
    json.real(tick.height);
    json.key("major");
    json.boolean(tick.major);
    json.key("label");
    json.string(tick.label);
    json.key("labelLeft");
    json.real(x - labelOffset);
    json.endObject();
  }
  json.endArray();

  // A marker that would be far off is not shown.
  const auto markerOf = [&](std::optional<double> value,
                            double chip) -> std::optional<ChipLayout::Marker> {
    if (!value)
      return std::nullopt;
    const double x = position(*value, width);
    if (!(x >= -width && x <= 2 * width))
      return std::nullopt;
    return ChipLayout::Marker{x, chip};
  };
  const auto answer = markerOf(shown.value, shown.answerChip);
  const auto truth = markerOf(shown.truth, shown.truthChip);
  const ChipLayout::Places places = ChipLayout::place(answer, truth, width, ratio);
  const auto barOf = [&](const std::optional<ChipLayout::Marker>& marker,
                         const ChipLayout::Place& chip) {
    return marker ? std::optional(Bar{StripLayout::markerLeft(marker->x, ratio), chip})
                  : std::nullopt;
  };
  json.key("markerWidth");
  json.real(StripLayout::markerWidthAt(ratio));
  append(json, "answer", barOf(answer, places.answer));
  append(json, "truth", barOf(truth, places.truth));
  json.endObject();
  return json.finish().value_or("null");
}

} // namespace velto
