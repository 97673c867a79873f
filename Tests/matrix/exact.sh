#!/usr/bin/env bash
# Sourced by the comparisons, which set `root`: flags, sources and include folders of the
# libraries that compute the renders.
# shellcheck disable=SC2034,SC2154

# The flags that exactness depends on, from the project's own CMakeLists.txt.
mapfile -t flags < <(grep -oE -- '-ffp-contract=off|-fno-tree-slp-vectorize' "$root/CMakeLists.txt")
if ((${#flags[@]} != 2)); then
  echo "CMakeLists.txt does not contain exactly the two expected flags."
  exit 1
fi

exact=("$root"/Sources/Velto/{numerics,training,synthesis}/*.cpp
  -I"$root"/Sources/Velto/{numerics,training,synthesis})
