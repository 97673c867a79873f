# shellcheck shell=bash
# What all packages share. Sourced by the scripts that make them.

set -euo pipefail
export LC_ALL=C TZ=UTC
umask 022

packaging=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source=$(cd "$packaging/.." && pwd)

fail() {
  printf '%s: %s\n' "${0##*/}" "$1" >&2
  exit 1
}

version=$(sed -n 's/^project(Velto VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
released=$(sed -n 's/^set(VELTO_RELEASE_DATE \([0-9-]*\))$/\1/p' "$source/CMakeLists.txt")
[[ -n $version && -n $released ]] || fail 'no version or no date of release in CMakeLists.txt'

# The time in everything that is packed, in seconds since 1970.
: "${SOURCE_DATE_EPOCH:=$(date -u -d "$released 12:00" +%s)}"
export SOURCE_DATE_EPOCH

# pack FOLDER: archives a folder into FOLDER.tar.xz, beside it. The same files always give the same
# bytes: neither their order, owners, times nor the umask matter. One thread, because xz splits the
# file into blocks if it uses several.
pack() {
  tar --create --directory "$(dirname "$1")" --sort=name --format=gnu --owner=0 --group=0 \
    --numeric-owner --mode='u=rwX,go=rX' --mtime="@$SOURCE_DATE_EPOCH" "$(basename "$1")" \
    | xz --threads=1 -6 --check=crc64 >"$1.tar.xz"
}

# copySources FOLDER: copies the sources without what was built. In a clone, that is what git tracks,
# as it is in the folder now. All have the time of the release, as they will when unpacked.
copySources() {
  mkdir -p "$1"
  if [[ $(git -C "$source" rev-parse --show-toplevel 2>/dev/null) == "$source" ]]; then
    git -C "$source" ls-files -z | while IFS= read -r -d '' file; do
      [[ ! -e $source/$file && ! -L $source/$file ]] || printf '%s\0' "$file"
    done
  else
    (cd "$source" && find . \( -path ./build -o -path './build-*' -o -path ./debian -o -path ./.git \
      -o -path ./.pc -o -name __pycache__ -o -name node_modules \) -prune -o ! -type d -printf '%P\0')
  fi | tar --create --directory "$source" --null --files-from=- | tar --extract --directory "$1"
  find "$1" -exec touch --no-dereference --date="@$SOURCE_DATE_EPOCH" {} +
}

# fillIn TEMPLATE [NAME=VALUE...]: prints a template with @NAME@ replaced, and always @VERSION@ and
# @MAINTAINER@.
fillIn() {
  local text pair name
  text=$(<"$1")
  shift
  for pair in "VERSION=$version" "MAINTAINER=${maintainer-}" "$@"; do
    name=${pair%%=*}
    text=${text//"@$name@"/"${pair#*=}"}
  done
  printf '%s\n' "$text"
}

# Nobody else's name goes into a package.
needMaintainer() {
  [[ -n ${DEBFULLNAME-} && ${DEBEMAIL-} == ?*@?* ]] \
    || fail "set DEBFULLNAME and DEBEMAIL to the name and the address of the packages' maintainer"
  maintainer="$DEBFULLNAME <$DEBEMAIL>"
}
