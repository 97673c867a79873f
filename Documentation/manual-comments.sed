# Turns the plain comments of a header into Doxygen comments:
#   comments before #pragma once describe the file,
#   a comment on a line of its own describes the next declaration,
#   a comment after code describes that code.
1,/^#pragma once/ {
  s|^// ?|/// |
  1 s|^|/// @file\n///\n|
}
s|^( *)// |\1/// |
s|^( *)//$|\1///|
# Removes comments that describe nothing: names at the ends of namespaces, NOLINT.
/ \/\/ (namespace |NOLINT)/ s| +// .*||
s|^(.*[^ /].*[^ /]) +// |\1 ///< |
