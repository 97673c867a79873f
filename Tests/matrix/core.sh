#!/usr/bin/env bash
# Read by the comparisons, which set `root`: what velto_core is built from.
# shellcheck disable=SC2154

# The flags that exactness rests on, as the project states them.
mapfile -t flags < <(grep -oE -- '-ffp-contract=off|-fno-tree-slp-vectorize' "$root/CMakeLists.txt")
if ((${#flags[@]} != 2)); then
  echo "CMakeLists.txt does not state the two flags."
  exit 1
fi

core=("$root"/Sources/Velto/core/*.cpp)
