# shellcheck shell=bash
# Bare systems, for the checks that install or run packages in one. Sourced.

skip() {
  echo "${0##*/}: SKIPPED: $*"
  exit 77
}

# needs TOOL...: skips the check without root or without one of the tools.
needs() {
  local tool
  ((EUID == 0)) || skip 'only root can create a system to install into'
  for tool in "$@"; do
    command -v "$tool" >/dev/null || skip "$tool is missing; ./build.sh package --check installs it"
  done
}

# bareSystem FOLDER LOG [SUITE]: makes a system of a Debian release, by default this machine's, in a
# folder that does not exist yet. It holds what debootstrap's minbase holds, keyboard layouts, and the
# user `listener`. VELTO_SYSTEMS names a folder in which systems are kept and from which they are
# copied; VELTO_MIRROR names another mirror than that of this machine's apt.
bareSystem() {
  local suite=${3-} system=$1 mirror
  [[ -n $suite ]] || suite=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
  [[ -z ${VELTO_SYSTEMS-} ]] || system=$VELTO_SYSTEMS/$suite
  if [[ ! -e $system/complete ]]; then
    # shellcheck disable=SC2016  # placeholders of apt-get
    mirror=${VELTO_MIRROR-$(apt-get indextargets --format '$(COMPONENT) $(REPO_URI)' \
      'Created-By: Packages' 'Origin: Debian' | sed -n 's/^main //p' | head -n 1)}
    [[ -n $mirror ]] || skip 'no Debian mirror is known; name one in VELTO_MIRROR'
    rm -rf --one-file-system "$system"
    mkdir -p "$system"
    debootstrap --variant=minbase --include=xkb-data "$suite" "$system" "$mirror" >"$2" 2>&1 \
      || { tail -n 20 "$2"; echo "${0##*/}: FAILED: debootstrap $suite"; exit 1; }
    chroot "$system" useradd --create-home listener
    touch "$system/complete"
  fi
  [[ $system == "$1" ]] || cp -a "$system" "$1"
}
