#!/usr/bin/env bash
# Sourced by the comparisons, which set `root`: flags and sources of velto_core.
# shellcheck disable=SC2034,SC2154

# The flags that exactness depends on, from the project's own CMakeLists.txt.
mapfile -t flags < <(grep -oE -- '-ffp-contract=off|-fno-tree-slp-vectorize' "$root/CMakeLists.txt")
if ((${#flags[@]} != 2)); then
  echo "CMakeLists.txt does not contain exactly the two expected flags."
  exit 1
fi

core=("$root"/Sources/Velto/core/*.cpp)
