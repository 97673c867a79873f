// A piece of QML written in a test.
#pragma once

#include "Seen.h"

#include <QQmlComponent>
#include <QVariantMap>

#include <stdexcept>

namespace velto::kit {

// Shows `qml`, which may use Qt Quick and the program's types, on a plain background. Main thread
// only. Needs a QGuiApplication.
struct Snippet {
  QQuickView view;
  QQuickItem* root = nullptr;

  explicit Snippet(const QByteArray& qml, const QVariantMap& properties = {}) {
    view.engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    view.setColor(QColor("#123456"));
    auto* component = new QQmlComponent(view.engine(), &view);
    component->setData("import QtQuick\nimport Velto\n" + qml, QUrl());
    root = qobject_cast<QQuickItem*>(component->createWithInitialProperties(properties));
    if (root == nullptr)
      throw std::runtime_error(component->errorString().toStdString());
    view.setContent(QUrl(), component, root);
    view.show();
  }

  Picture picture() {
    QCoreApplication::processEvents();
    QImage image = view.grabWindow();
    image.setDevicePixelRatio(view.effectiveDevicePixelRatio());
    return Picture(image);
  }
  [[nodiscard]] QQuickItem* item(const QString& name) const {
    if (root->objectName() == name)
      return root;
    QQuickItem* found = Stage::find(root, name);
    if (found == nullptr)
      throw std::runtime_error("no visible item is named " + name.toStdString());
    return found;
  }
};

} // namespace velto::kit
