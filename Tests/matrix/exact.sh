#!/usr/bin/env bash
# Sourced by the comparisons, which set `root`: flags, warnings, sources and include folders of the
# libraries that compute the renders.
# shellcheck disable=SC2034,SC2154

# The flags that exactness depends on, from the project's own CMakeLists.txt.
mapfile -t flags < <(grep -oE -- '-ffp-contract=off|-fno-tree-slp-vectorize' "$root/CMakeLists.txt")
if ((${#flags[@]} != 2)); then
  echo "CMakeLists.txt does not contain exactly the two expected flags."
  exit 1
fi

# The project's own warnings, from the same place. No compiler may have any here.
mapfile -t warnings < <(sed -n '/^set(VELTO_WARNINGS$/,/)/p' "$root/CMakeLists.txt" | grep -oE -- '-W[a-z-]+')
if ((${#warnings[@]} < 5)); then
  echo "CMakeLists.txt does not contain the expected warnings."
  exit 1
fi
warnings+=(-Werror)

exact=("$root"/Sources/Velto/{numerics,training,synthesis}/*.cpp
  -I"$root"/Sources/Velto/{numerics,training,synthesis})
