// Draws the proof sheets of a typeface with the toolkit and the renderer that the program uses.
//
//     specimen FACE.otf FOLDER
//
// writes sheet.png (wordmark, figures, alphabet, spacing words, waterfall), wordmark.png and
// wordmark-magnified.png (the sizes in use, on both backgrounds) and large.png (every glyph).
// specimen.py compiles this program and runs it without a display.

#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTextStream>

#include <memory>

namespace {

const char* const sheet = R"(
import QtQuick
Rectangle {
    id: sheet
    width: 1800; height: column.height + 60; color: "#F7F5F1"
    component Face: Text { font.family: "MORLA Display"; color: "#15171C" }
    Column {
        id: column
        x: 40; y: 30; width: 1720; spacing: 16
        Face { text: "MORLA Velto"; font.pixelSize: 200 }
        Face { text: "0123456789 67% 5d"; font.pixelSize: 140 }
        Face { text: "ABCDEFGHIJKLM"; font.pixelSize: 110 }
        Face { text: "NOPQRSTUVWXYZ"; font.pixelSize: 110 }
        Face { text: "abcdefghijklmnopqrs"; font.pixelSize: 110 }
        Face { text: "tuvwxyz &@$#%*?!"; font.pixelSize: 110 }
        Face { text: "( [ { | / \\ } ] ) + − ± × = < > ~ ^ °"; font.pixelSize: 72 }
        Face { text: ". , : ; … · - – — _ “H” ‘n’ \"x\" 'o' `"; font.pixelSize: 72 }
        Face { text: "HHOHOOH nnonoon HAVE OR RL LA Velto"; font.pixelSize: 64 }
        Face { text: "hamburgefonts dozen quick jackpots 5d 67% 104"; font.pixelSize: 48 }
        Face { text: "LEVEL DYNAMICS POLARITY FREQUENCY AWAY TYPE"; font.pixelSize: 48 }
        Repeater {
            model: [9, 10, 11, 12, 14, 16, 19, 22, 26, 32, 40, 52, 68, 96]
            Face {
                required property int modelData
                text: modelData + " MORLA Velto 0123456789 67% 5d"; font.pixelSize: modelData
            }
        }
    }
}
)";

const char* const wordmark = R"(
import QtQuick
Row {
    component Face: Text { font.family: "MORLA Display" }
    component Ground: Rectangle {
        id: ground
        property color ink
        width: 300; height: 170
        Column {
            x: 14; y: 10; spacing: 6
            Face { text: "MORLA Velto"; font.pixelSize: 22; color: ground.ink }
            Row {
                spacing: 26
                Repeater {
                    model: ["5d", "67%", "128", "90", "34"]
                    Face {
                        required property string modelData
                        text: modelData; font.pixelSize: 19; color: ground.ink
                    }
                }
            }
            Face { text: "0123456789 ABCDEFGHIJ"; font.pixelSize: 19; color: ground.ink }
            Face { text: "KLMNOPQRSTUVWXYZ"; font.pixelSize: 22; color: ground.ink }
            Face { text: "abcdefghijklmnopqrst"; font.pixelSize: 22; color: ground.ink }
        }
    }
    Ground { color: "#0B0C0F"; ink: "#F0F1F4" }
    Ground { color: "#FAF3EF"; ink: "#1B1D22" }
}
)";

const char* const large = R"(
import QtQuick
Rectangle {
    width: 1600; height: grid.height + 40; color: "white"
    Grid {
        id: grid
        x: 20; y: 20; columns: 8; spacing: 0
        Repeater {
            model: glyphs
            Rectangle {
                required property string modelData
                width: 195; height: 215; border.color: "#DDDDDD"
                Rectangle { y: 160; width: 195; height: 1; color: "#BBDDFF" }
                Rectangle { y: 160 - 146; width: 195; height: 1; color: "#BBDDFF" }
                Rectangle { y: 160 - 109; width: 195; height: 1; color: "#BBDDFF" }
                Text {
                    anchors.horizontalCenter: parent.horizontalCenter
                    y: 160 - baselineOffset; text: parent.modelData
                    font.family: "MORLA Display"; font.pixelSize: 200; color: "#15171C"
                }
            }
        }
    }
}
)";

QImage drawn(const char* source, const QStringList& glyphs) {
  QQuickView view;
  view.rootContext()->setContextProperty("glyphs", glyphs);
  QQmlComponent component(view.engine());
  component.setData(source, QUrl("qrc:/sheet.qml"));
  auto* item = qobject_cast<QQuickItem*>(component.create());
  if (!item) {
    qFatal("%s", qPrintable(component.errorString()));
  }
  view.setContent(QUrl("qrc:/sheet.qml"), &component, item);
  view.resize(int(item->width()), int(item->height()));
  view.show();
  return view.grabWindow();
}

} // namespace

int main(int argc, char** argv) {
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  QGuiApplication application(argc, argv);
  if (argc != 3 || QFontDatabase::addApplicationFont(QString::fromLocal8Bit(argv[1])) < 0) {
    QTextStream(stderr) << "usage: specimen FACE.otf FOLDER\n";
    return 1;
  }
  QStringList glyphs;
  for (char16_t c = 0x21; c < 0x7F; ++c) {
    glyphs << QString(QChar(c));
  }
  const QString others = QStringLiteral(u"—·–…°±×−“”‘’");
  for (QChar c : others) {
    glyphs << QString(c);
  }
  const QString folder = QString::fromLocal8Bit(argv[2]) + "/";
  const QImage small = drawn(wordmark, glyphs);
  const bool saved = drawn(sheet, glyphs).save(folder + "sheet.png") &&
                     drawn(large, glyphs).save(folder + "large.png") &&
                     small.save(folder + "wordmark.png") &&
                     small.scaled(small.size() * 5).save(folder + "wordmark-magnified.png");
  return saved ? 0 : 1;
}
