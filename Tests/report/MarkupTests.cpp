#include "Markup.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>

namespace velto {
namespace {

std::string unescaped(std::string text) {
  const std::pair<const char*, const char*> entities[]{
      {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}};
  for (const auto& [entity, character] : entities)
    for (std::size_t at = text.find(entity); at != text.npos; at = text.find(entity, at + 1))
      text.replace(at, std::string(entity).size(), character);
  return text;
}

TEST(Markup, NestsElements) {
  Markup markup;
  markup.open("p", {{"class", "a"}, {"id", "b"}}).text("x").element("b", "y").empty("br").close();
  EXPECT_EQ(markup.finish(), "<p class=\"a\" id=\"b\">x<b>y</b><br/></p>");
}

TEST(Markup, EscapesTextAndValues) {
  Markup markup;
  markup.element("p", {{"title", "\"<&>"}}, "<script>&\"");
  EXPECT_EQ(markup.finish(), "<p title=\"&quot;&lt;&amp;&gt;\">&lt;script&gt;&amp;&quot;</p>");
}

TEST(Markup, ReplacesControlCharacters) {
  EXPECT_EQ(Markup::escaped(std::string("a\0b\x1f\n", 5)), "a\uFFFDb\uFFFD\n");
}

RC_GTEST_PROP(MarkupLaw, EscapingLosesNothing, ()) {
  std::string text;
  for (int i = *rc::gen::inRange(0, 30); i > 0; --i)
    text += *rc::gen::element('&', '<', '>', '"', '\'', ';', 'a', 'l', 't', 'g', '\n', '\xc3');
  const std::string escaped = Markup::escaped(text);
  RC_ASSERT(escaped.find_first_of("<>\"") == std::string::npos);
  RC_ASSERT(unescaped(escaped) == text);
}

TEST(MarkupDeathTest, RefusesElementsThatDoNotMatch) {
  EXPECT_DEATH(Markup().close(), "no element is open");
  EXPECT_DEATH(static_cast<void>(Markup().open("p").finish()), "still open");
}

} // namespace
} // namespace velto
