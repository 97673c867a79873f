#include "StyleSheet.h"

#include "Colors.h"
#include "Progress.h"

#include <algorithm>
#include <cmath>

namespace velto {

namespace {

constexpr int weaknessSteps = 10;
constexpr std::array dayStrength{0.0, 0.3, 0.5, 0.75, 1.0}; // of the colour, by class

// A letter and a number, such as "w10".
std::string numbered(char letter, std::int64_t number) {
  std::string name(1, letter);
  name += std::to_string(number);
  return name;
}

// "#0b0c0f", of an opaque colour.
std::string hex(const Colors::Color& color) {
  constexpr const char* digits = "0123456789abcdef";
  std::string text = "#";
  for (const float part : {color.red, color.green, color.blue}) {
    const auto value = static_cast<unsigned>(std::lround(255 * part));
    text += digits[value >> 4U];
    text += digits[value & 0xFU];
  }
  return text;
}

std::string variable(const std::string& name, const Colors::Color& color) {
  return "--" + name + ":" + hex(color) + ";";
}

std::string variables(const Colors::Palette& colors) {
  const Colors::Color line = Colors::laidOver(colors.line, colors.bg);
  std::string text = variable("bg", colors.bg) + variable("surface", colors.surface) +
                     variable("ink", colors.ink) + variable("muted", colors.muted) +
                     variable("line", line) + variable("identity", colors.identity) +
                     variable("signal", colors.signal) + variable("control", colors.control) +
                     variable("good", colors.good) + variable("bad", colors.bad);
  for (int i = 0; i <= weaknessSteps; ++i)
    text += variable(numbered('w', i), Colors::weakness(colors.good, colors.warn, colors.bad,
                                                        static_cast<double>(i) / weaknessSteps));
  for (std::size_t i = 0; i < dayStrength.size(); ++i)
    text += variable(numbered('d', static_cast<std::int64_t>(i)),
                     Colors::mix(colors.track, colors.signal, dayStrength.at(i)));
  return text;
}

// The light palette on white.
Colors::Palette paper() {
  Colors::Palette palette = Colors::light();
  palette.bg = palette.surface = {1, 1, 1, 1};
  return palette;
}

std::string fills() {
  std::string text;
  const auto append = [&text](const std::string& name) {
    text += "." + name + "{fill:var(--" + name + ")}";
  };
  for (int i = 0; i <= weaknessSteps; ++i)
    append(numbered('w', i));
  for (std::size_t i = 0; i < dayStrength.size(); ++i)
    append(numbered('d', static_cast<std::int64_t>(i)));
  return text;
}

constexpr const char* rules = R"(
*{box-sizing:border-box}
body{margin:0;background:var(--bg);color:var(--ink);font:15px/1.45 Inter,system-ui,sans-serif}
main{max-width:1080px;margin:0 auto;padding:20px 16px 32px}
h1{font-size:26px;line-height:1.2;margin:0;padding-left:12px;border-left:4px solid var(--identity)}
h2{font-size:17px;margin:0 0 8px}
p{margin:0 0 8px}
.sub{color:var(--muted);margin:8px 0 16px}
section{background:var(--surface);border:1px solid var(--line);border-radius:10px;padding:14px;margin:0 0 14px}
ol{margin:0;padding-left:22px}
li{margin:0 0 6px}
.pair{display:grid;grid-template-columns:minmax(0,1fr);gap:14px;align-items:start}
figure{margin:0}
figcaption,.note{color:var(--muted);font-size:13px}
svg{display:block;width:100%;max-width:520px;height:auto;margin:0 0 4px}
table{border-collapse:collapse;width:100%;font-size:13px;font-variant-numeric:tabular-nums}
caption{text-align:left;color:var(--muted);padding:0 0 4px}
th,td{text-align:right;padding:3px 6px;border-bottom:1px solid var(--line);white-space:nowrap}
thead th{white-space:normal}
th{color:var(--muted);font-weight:500;vertical-align:bottom}
code{font:inherit;white-space:nowrap}
.note{margin:8px 0 0}
th:first-child,td:first-child{text-align:left}
tbody th{color:var(--ink)}
text{font-size:10px;font-family:inherit}
.tick,.name,.count{fill:var(--muted)}
.name,.count{paint-order:stroke;stroke:var(--surface);stroke-width:3px;stroke-linejoin:round}
.count{font-size:8px;stroke-width:2px}
.grid{stroke:var(--line);stroke-width:1}
.axis{stroke:var(--muted);stroke-width:1}
.day{stroke:var(--muted);stroke-width:.7;stroke-dasharray:1 3}
.range{stroke:var(--control);stroke-width:2;opacity:.45}
.course{fill:none;stroke:var(--control);stroke-width:1.6;stroke-linejoin:round}
.dot{fill:var(--control)}
.curve{fill:none;stroke:var(--signal);stroke-width:2}
.interval{fill:var(--signal);opacity:.12}
.threshold{stroke:var(--signal);stroke-width:1.2}
.guess{stroke:var(--muted);stroke-width:1;stroke-dasharray:4 3}
.answers{fill:var(--ink);opacity:.55}
.yours{fill:var(--signal)}
.theirs{fill:none;stroke:var(--muted);stroke-width:1.6}
.whisker{stroke:var(--ink);stroke-width:1}
.today{stroke:var(--ink);stroke-width:1}
@media screen and (max-width:719px){
table{font-size:12px}th,td{padding:3px}
.stack thead{display:none}
.stack tr{display:block;padding:0 0 8px}
.stack th,.stack td{display:flex;justify-content:space-between;gap:12px;white-space:normal}
.stack td::before{content:attr(data-label);color:var(--muted);text-align:left}
}
@media (min-width:720px){.pair{grid-template-columns:repeat(2,minmax(0,1fr))}}
)";

constexpr const char* paperRules = "@page{size:A4;margin:10mm}"
                                   "body{font-size:8.5pt;line-height:1.3}"
                                   "main{max-width:none;padding:0}"
                                   "h1{font-size:15pt}h2{font-size:10.5pt;margin-bottom:3px}"
                                   ".sub{margin:4px 0 8px}"
                                   "section{padding:6px 9px;margin-bottom:6px;break-inside:avoid}"
                                   "ol{padding-left:16px}li{margin-bottom:2px}"
                                   ".pair{grid-template-columns:repeat(2,minmax(0,1fr));gap:10px}"
                                   "figcaption,.note,table{font-size:7.5pt}"
                                   "th,td{padding:1px 4px}"
                                   "svg{max-width:none}";

} // namespace

std::string StyleSheet::weaknessClass(double meanErrorOct) {
  const auto weakness = Progress::bar({.attempts = 1, .meanErrorOct = meanErrorOct}).weakness;
  return numbered('w', std::lround(*weakness * weaknessSteps));
}

std::string StyleSheet::dayClass(std::int64_t answers) {
  if (answers <= 0)
    return "d0";
  const auto limit = std::lower_bound(dayLimits.begin(), dayLimits.end(), answers);
  return numbered('d', limit - dayLimits.begin() + 1);
}

std::string StyleSheet::text() {
  return ":root{color-scheme:light dark;" + variables(Colors::light()) + "}" +
         "@media (prefers-color-scheme:dark){:root{" + variables(Colors::dark()) + "}}" + rules +
         fills() + "@media print{:root{color-scheme:light;" + variables(paper()) + "}" +
         paperRules + "}";
}

} // namespace velto
