#include "kit/Snippet.h"

using namespace velto;
using namespace velto::kit;

TEST(PanelView, HasItsTitlePaddingAndOutline) {
  Snippet snippet(R"(Item { width: 300; height: 120; Theme.palette: Palettes.light
    Panel { objectName: "panel"; width: 300; height: implicitHeight; title: "Weakness map"
      Rectangle { objectName: "content"; width: 50; height: 30; color: "#336699" }
    }
  })");
  const Picture picture = snippet.picture();
  QQuickItem* title = snippet.item("panelTitle");
  expectText(title, picture,
             {"WEAKNESS MAP", "JetBrains Mono", medium, 10, 1.4, "#9A8F84", "#FFFBF6"});
  EXPECT_EQ(Stage::box(title).topLeft(), QPointF(14, 14));
  const QRectF content = Stage::box(snippet.item("content"));
  EXPECT_EQ(content.topLeft(), QPointF(14, 14 + title->height() + 10));
  EXPECT_DOUBLE_EQ(snippet.item("panel")->height(), content.bottom() + 14);
  expectBox(snippet.item("panelBox"), picture,
            {10, true, "#FFFBF6", lightHues.line, 1, "#123456", {200, 40}});
  EXPECT_DOUBLE_EQ(snippet.item("panelBox")->width(), 300);
}

TEST(PanelView, HasNoTitleRowWithoutATitle) {
  Snippet snippet(R"(Panel { width: 300; height: implicitHeight
    Rectangle { objectName: "content"; width: 50; height: 30 }
  })");
  (void)snippet.picture();
  EXPECT_EQ(Stage::find(snippet.root, "panelTitle"), nullptr);
  EXPECT_EQ(Stage::box(snippet.item("content")).topLeft(), QPointF(14, 14));
  EXPECT_DOUBLE_EQ(snippet.root->height(), 30 + 28);
}
