// The program's resource files.
#pragma once

#include <QString>

namespace velto {

// The path of the resource `name`; empty if there is none. Resources are in ../share/velto relative
// to the program's folder, in build trees and installed trees.
[[nodiscard]] QString resourceFile(const QString& name);

} // namespace velto
