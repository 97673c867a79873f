#include "Graphics.h"

#include <QQuickWindow>

namespace velto {

void Graphics::prepare() {
  if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  // Stem darkening of CFF fonts makes light text on a dark background look a weight bolder.
  constexpr const char* freetypeProperties = "FREETYPE_PROPERTIES";
  if (!qEnvironmentVariableIsSet(freetypeProperties))
    qputenv(freetypeProperties, "cff:no-stem-darkening=1");
}

} // namespace velto
