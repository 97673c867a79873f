#include "Graphics.h"

#include "desktop/StemDarkening.h"

#include <QQuickWindow>

namespace velto {

void Graphics::prepare() {
  if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  StemDarkening::prevent();
}

} // namespace velto
