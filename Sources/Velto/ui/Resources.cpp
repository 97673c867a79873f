#include "Resources.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace velto {

QString resourceFile(const QString& name) {
  const QDir programFolder(QCoreApplication::applicationDirPath());
  const QString path =
      QDir::cleanPath(programFolder.filePath(QStringLiteral("../share/velto/") + name));
  return QFileInfo(path).isFile() ? path : QString();
}

} // namespace velto
