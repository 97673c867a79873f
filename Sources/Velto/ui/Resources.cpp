#include "Resources.h"

#include "Subprocess.h"

#include <QDir>
#include <QFileInfo>

namespace velto {

namespace {

QString resourcePath(const QString& name) {
  const QFileInfo program(QString::fromStdString(Subprocess::ownPath()));
  const QDir programFolder = QFileInfo(program.canonicalFilePath()).dir();
  return QDir::cleanPath(programFolder.filePath(QStringLiteral("../share/velto/") + name));
}

} // namespace

QString resourceFile(const QString& name) {
  const QString path = resourcePath(name);
  return QFileInfo(path).isFile() ? path : QString();
}

QStringList resourceFiles(const QString& folder, const QString& pattern) {
  const QDir files(resourcePath(folder));
  QStringList paths;
  for (const QString& name : files.entryList({pattern}, QDir::Files, QDir::Name))
    paths.append(files.filePath(name));
  return paths;
}

} // namespace velto
