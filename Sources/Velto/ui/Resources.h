// Where the program's own files lie.
#pragma once

#include <QString>

namespace velto {

// The path of the resource `name`, or an empty path when it is not there. Resources lie in
// share/velto beside the folder of the program, in a build and in an installed tree alike.
[[nodiscard]] QString resourceFile(const QString& name);

} // namespace velto
