# shellcheck shell=bash
# A bare system of this machine's Debian release, for the checks that install into one. Sourced.

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

# bareSystem FOLDER LOG: makes the system in a folder that does not exist yet, with the user
# `listener`. VELTO_SYSTEMS names a folder with systems to copy, named as Debian names its releases;
# VELTO_MIRROR names another mirror than that of this machine's apt.
bareSystem() {
  local release mirror
  release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
  if [[ -e ${VELTO_SYSTEMS-}/$release/complete ]]; then
    cp -a "$VELTO_SYSTEMS/$release" "$1"
    return
  fi
  # shellcheck disable=SC2016  # placeholders of apt-get
  mirror=${VELTO_MIRROR-$(apt-get indextargets --format '$(RELEASE) $(COMPONENT) $(REPO_URI)' \
    'Created-By: Packages' | sed -n "s/^$release main //p" | head -n 1)}
  [[ -n $mirror ]] || skip "no mirror of $release is known; name one in VELTO_MIRROR"
  debootstrap --variant=minbase --include=xkb-data "$release" "$1" "$mirror" >"$2" 2>&1 \
    || { tail -n 20 "$2"; exit 1; }
  chroot "$1" useradd --create-home listener
}
