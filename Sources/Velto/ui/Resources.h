// The program's resource files.
#pragma once

#include <QString>
#include <QStringList>

namespace velto {

// The path of the resource `name`; empty if there is none. Resources are in ../share/velto relative
// to the program's folder, in build trees and installed trees. Needs no QCoreApplication.
[[nodiscard]] QString resourceFile(const QString& name);

// The paths of the resource files in `folder` whose names match the wildcard `pattern`, by name.
[[nodiscard]] QStringList resourceFiles(const QString& folder, const QString& pattern);

} // namespace velto
