// A Qt Quick window with one rectangle, of the program's size, title and back end: the least that a
// first frame can cost.
#include <QGuiApplication>
#include <QQuickView>

int main(int argc, char** argv) {
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QGuiApplication application(argc, argv);
  QQuickView view;
  view.setTitle(QStringLiteral("MORLA Velto"));
  view.setResizeMode(QQuickView::SizeRootObjectToView);
  view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Bare/BareWindow.qml")));
  view.resize(1180, 386);
  view.show();
  return QGuiApplication::exec();
}
