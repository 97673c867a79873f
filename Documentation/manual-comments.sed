# Turns the plain comments of a header into those that Doxygen reads:
#   the lines before #pragma once describe the file,
#   a line of its own describes what follows,
#   a comment behind code describes what it stands behind.
1,/^#pragma once/ {
  s|^// ?|/// |
  1 s|^|/// @file\n///\n|
}
s|^( *)// |\1/// |
s|^( *)//$|\1///|
# Not descriptions: the names at the ends of namespaces, notes to checkers.
/ \/\/ (namespace |NOLINT)/ s| +// .*||
s|^(.*[^ /].*[^ /]) +// |\1 ///< |
