#!/usr/bin/env bash
# Entry point for developers: installs missing packages, builds, runs and tests. See `./build.sh
# help`.

set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
self=build.sh

usage() {
  cat <<'END'
Usage: ./build.sh [COMMAND]

  build             install missing packages, configure and build (release, in build/); the default
  run [SWITCHES]    build, then run build/bin/velto with the switches; without a display, play a
                    trial on a private desktop and print the path of a screenshot
  test [OPTIONS]    build and run the tests; other arguments go to ctest, for example -R Signals
      --long        the long tests instead of the default ones
      --matrix      the tests across compilers and architectures
      --systems [NAME...]
                    run and test in bare systems, made for this in build/systems/ (as root): those
                    named of bookworm, trixie, testing and sid, else the first three
      --asan        build them with the address and undefined-behaviour sanitizers
      --tsan        the tests of threaded code, with the thread sanitizer
      --web [NAME...]
                    the practice page in browsers, those named of chromium, firefox and webkit, else
                    all three; playwright-core and axe-core come from npm
      --coverage    measure the line coverage; fails below 95 % in training and synthesis
  lint              run the formatters and checkers over the sources
      --fix         let the formatters rewrite the sources
      --quick       skip clang-tidy for tests and benchmarks that the last commit did not change
  docs              generate the API reference, build/docs/html/index.html
  package           build the packages in build-package/release/: for Debian, with its source; a
                    bundle that runs from any folder; RPM; recipes for Arch Linux and Flatpak. In the
                    environment, DEBFULLNAME and DEBEMAIL name their maintainer
      --check       also check them: linters, bare Debian 12, 13 and testing (as root), a second
                    build that must give the same bytes
  web               build the practice page for browsers, a folder of static files, in build-web/
      --serve       then open it on this machine, at http://localhost:8080 (VELTO_PORT)
  bench [OPTIONS]   build and run the benchmarks, time the first frame and a key's way to the screen,
                    and count the instructions of a render; options go to the benchmarks, for
                    example --benchmark_filter=render
      --web [NAME...]
                    instead measure the practice page in chromium, firefox and webkit
  help              print this text
END
}

say() {
  printf '== %s\n' "$*"
}

fail() {
  printf '%s: %s\n' "$self" "$1" >&2
  exit "${2:-1}"
}

# --- Packages (Debian names), one per line --------------------------------------------------------
#
# The sign @ stands for a version number; see numbered().

buildPackages=(
  cmake
  g++
  libcli11-dev
  libcubeb-dev
  libfontconfig-dev
  libsndfile1-dev
  ninja-build
  pkg-config
  qt6-base-dev
  qt6-declarative-dev
)

# QML modules are loaded at run time: no library's package depends on theirs.
runPackages=(
  fonts-inter
  fonts-jetbrains-mono
  libqt6dbus6
  qml6-module-qtqml
  qml6-module-qtqml-workerscript
  qml6-module-qtquick
)

packagePackages=(
  binutils
  debhelper
  dpkg-dev
  patchelf
  qt6-wayland
  rpm
  xz-utils
)

deskPackages=(
  openbox
  pulseaudio
  pulseaudio-utils
  x11-utils
  xvfb
)

testPackages=(
  at-spi2-core
  clang
  dbus-daemon
  fontmake
  fonts-cantarell
  fonts-dejavu-core
  grim
  jackd2
  libasound2-plugins
  libatspi2.0-dev
  libclang-rt-dev
  libebur128-dev
  libgtest-dev
  librapidcheck-dev
  libxcb-xtest0-dev
  libxcb1-dev
  libxml2-utils
  locales
  nlohmann-json3-dev
  pipewire
  pipewire-pulse
  psignifit
  python3-fonttools
  python3-ufolib2
  qt6-wayland
  sox
  sway
  tidy
  valgrind
  wireplumber
  wtype
  xz-utils
)

# For test --long: file systems on loop devices.
longPackages=(
  btrfs-progs
  e2fsprogs
  f2fs-tools
  xfsprogs
)

docsPackages=(
  doxygen
)

lintPackages=(
  clang-format
  clang-tidy
  doxygen
  flake8
  qt6-declarative-dev-tools
  shellcheck
)

benchPackages=(
  libbenchmark-dev
  libxcb-xtest0-dev
  libxcb1-dev
  sox
  valgrind
)

coveragePackages=(
  gcovr
)

matrixPackages=(
  clang
  clang-@
  g++-aarch64-linux-gnu
  g++-mingw-w64-x86-64-posix
  libc++-@-dev-wasm32
  libc++-dev
  libc++abi-@-dev-wasm32
  libc++abi-dev
  libclang-rt-@-dev-wasm32
  lld-@
  nodejs
  qemu-user
  wasi-libc
  wine64
)

# For test --systems.
systemsPackages=(
  debootstrap
  git
)

webPackages=(
  clang-@
  cmake
  fonts-inter
  fonts-jetbrains-mono
  libc++-@-dev-wasm32
  libc++abi-@-dev-wasm32
  libclang-rt-@-dev-wasm32
  lld-@
  ninja-build
  node-typescript
  python3
  python3-fonttools
  wasi-libc
)

# For test --web, with npm, which Node.js from elsewhere brings along.
webTestPackages=(
  chromium
  firefox-esr
  gstreamer1.0-pulseaudio
  webkit2gtk-driver
)

# For package --check.
checkPackages=(
  appstream
  autopkgtest
  cpio
  debootstrap
  desktop-file-utils
  faketime
  file
  flatpak-builder
  libarchive-tools
  librsvg2-bin
  lintian
  makepkg
  mandoc
  rpmlint
  sway
  wtype
)

# Prints those of the packages that apt can install. It also knows names that others only refer to.
candidates() {
  apt-cache madison "$@" | awk '{print $1}' | sort -u
}

# numbered NAME...: prints the names of packages, with the sign @ replaced by the greatest number for
# which apt knows all of those that have it. Without such a number they are printed as they are.
numbered() {
  local -a with=() found=()
  local name number
  for name in "$@"; do
    if [[ $name == *@* ]]; then with+=("$name"); else printf '%s\n' "$name"; fi
  done
  ((${#with[@]} > 0)) || return 0
  local pattern=${with[0]//+/[+]}
  while read -r number; do
    mapfile -t found < <(candidates "${with[@]//@/"$number"}")
    if ((${#found[@]} == ${#with[@]})); then
      with=("${found[@]}")
      break
    fi
  done < <(apt-cache pkgnames "${with[0]%%@*}" | sed -nE "s/^${pattern//@/([0-9]+)}\$/\\1/p" | sort -rn)
  printf '%s\n' "${with[@]}"
}

# Prints those of the packages that are not installed.
missingOf() {
  local -A installed=()
  local name
  while read -r name; do installed[$name]=1; done < <(
    dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p')
  for name in "$@"; do
    [[ -n ${installed[$name]-} ]] || printf '%s\n' "$name"
  done
}

# ask TEXT PACKAGE...: says what this user cannot install, except packages that it has named before.
declare -A asked=()
ask() {
  local text=$1 name
  local -a new=()
  shift
  for name in "$@"; do
    [[ -n ${asked[$name]-} ]] || new+=("$name")
    asked[$name]=1
  done
  ((${#new[@]} == 0)) || say "$text ${new[*]}"
}

# Installs missing packages. A user who may not is told once what to ask for; the build and the
# tests then do without.
provide() {
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    ask 'No apt-get. Required packages, by their Debian names:' "$@"
    return
  fi
  local -a names=() missing=() known=()
  mapfile -t names < <(numbered "$@")
  mapfile -t missing < <(missingOf "${names[@]}")
  ((${#missing[@]} > 0)) || return 0

  local -a as=(env DEBIAN_FRONTEND=noninteractive)
  if ((EUID != 0)); then
    # Without a terminal, sudo cannot ask for a password.
    if [[ -t 0 ]]; then as=(sudo "${as[@]}"); else as=(sudo -n "${as[@]}"); fi
    if ! "${as[@]}" true 2>/dev/null; then
      ask 'Going on without missing packages. Ask an administrator for: apt-get install' \
        "${missing[@]}"
      return
    fi
  fi
  "${as[@]}" apt-get update </dev/null || say 'Cannot refresh the package lists; using the old ones'
  # A bare system knows no packages before.
  mapfile -t names < <(numbered "${missing[@]}")
  mapfile -t known < <(candidates "${names[@]}")
  mapfile -t missing < <(printf '%s\n' "${names[@]}" | grep -vxF -f <(printf '%s\n' "${known[@]}"))
  ((${#missing[@]} == 0)) || ask 'This system has no packages with these names:' "${missing[@]}"
  ((${#known[@]} > 0)) || return 0
  say "Installing missing packages: ${known[*]}"
  "${as[@]}" apt-get install -y --no-install-recommends -o DPkg::Lock::Timeout=300 \
    "${known[@]}" </dev/null || fail "apt-get could not install: ${known[*]}"
}

# --- Build ----------------------------------------------------------------------------------------

# configure PRESET FOLDER [NAME=VALUE...]: configures FOLDER unless it already has these settings.
# The environment may set VELTO_WARNINGS_AS_ERRORS=ON: newer compilers warn of more.
configure() {
  local preset=$1 folder=$2 setting
  shift 2
  local warnings=${VELTO_WARNINGS_AS_ERRORS-}
  [[ -z $warnings ]] || set -- "$@" "VELTO_WARNINGS_AS_ERRORS=$warnings"
  local stale=false
  [[ -f $folder/CMakeCache.txt && -f $folder/build.ninja ]] || stale=true
  # What was missing may have been installed since.
  $stale || ! grep -q '^VELTO_MISSING:INTERNAL=.' "$folder/CMakeCache.txt" || stale=true
  for setting in "$@"; do
    $stale || grep -qE "^${setting%%=*}:[A-Z]+=${setting#*=}\$" "$folder/CMakeCache.txt" || stale=true
  done
  $stale || return 0
  command -v cmake >/dev/null || fail 'cmake is missing, without which nothing can be built'
  say "Configuring $preset in ${folder##*/}/"
  (cd "$root" && cmake --preset "$preset" -B "$folder" "${@/#/-D}")
}

compile() {
  say "Building in ${1##*/}/"
  cmake --build "$@"
}

# Keeps an existing configuration, which may include the tests.
configureProgram() {
  [[ -f $root/build/CMakeCache.txt && -f $root/build/build.ninja ]] \
    || configure release "$root/build" VELTO_BUILD_TESTS=OFF
}

build() {
  provide "${buildPackages[@]}" "${runPackages[@]}"
  configureProgram
  compile "$root/build"
}

# --- Run ------------------------------------------------------------------------------------------

# True if there is a display to connect to.
hasDisplay() {
  local wayland=${WAYLAND_DISPLAY-} x=${DISPLAY-}
  if [[ -n $wayland ]]; then
    [[ $wayland == /* ]] || wayland=${XDG_RUNTIME_DIR-}/$wayland
    [[ ! -S $wayland ]] || return 0
  fi
  [[ $x =~ ^([^:]*):([0-9]+)(\.[0-9]+)?$ ]] || return 1
  local host=${BASH_REMATCH[1]} number=${BASH_REMATCH[2]}
  if [[ -z $host || $host == unix ]]; then
    # The socket file suffices: that of a server outside this container is not listed in
    # /proc/net/unix, which shows this network namespace only.
    [[ -S /tmp/.X11-unix/X$number ]] || grep -q " @/tmp/.X11-unix/X$number\$" /proc/net/unix
  else
    timeout 5 bash -c "exec 3<>/dev/tcp/$host/$((6000 + number))" 2>/dev/null
  fi
}

hasSound() {
  [[ -n ${PULSE_SERVER-} || -S ${XDG_RUNTIME_DIR-}/pulse/native ]] || compgen -G '/dev/snd/pcm*p' >/dev/null
}

# given WORD... -- [SWITCH...]: true if one of the words is among the switches.
given() {
  local -a words=()
  while [[ $1 != -- ]]; do words+=("$1"); shift; done
  shift
  local switch word
  for switch in "$@"; do
    for word in "${words[@]}"; do [[ $switch != "$word" ]] || return 0; done
  done
  return 1
}

# valueOf NAME [SWITCH...]: prints the argument after the first NAME.
valueOf() {
  local wanted=$1
  shift
  while (($# > 1)); do
    if [[ $1 == "$wanted" ]]; then printf '%s' "$2"; return; fi
    shift
  done
}

run() {
  local program=$root/build/bin/velto how=trial
  # Asked for together: a user who may not install them is told once.
  local -a packages=("${deskPackages[@]}")
  if given --help --version --probe --brand-check --bench --seed-demo -- "$@" || hasDisplay; then
    how=directly packages=()
    if [[ -n ${WAYLAND_DISPLAY-} && -z ${DISPLAY-} ]]; then packages=(qt6-wayland); fi
  elif given --audio-selftest --bench-audio -- "$@"; then
    how=sound
    if hasSound; then how=directly packages=(); fi
  fi
  {
    provide "${buildPackages[@]}" "${runPackages[@]}" "${packages[@]}"
    configureProgram
    compile "$root/build" --target velto
  } >&2
  case $how in
    directly) exec "$program" "$@" ;;
    sound) exec "$root/Tests/desk/desk" --no-display -- "$program" "$@" ;;
    trial) trial "$program" "$@" ;;
  esac
}

# trial PROGRAM [SWITCH...]: runs a scripted trial on a private desktop.
trial() {
  local program=$1 folder=$root/build/trial
  shift
  given --drill --answer --shot -- "$@" || set -- "$@" --drill frequency --answer 1000
  given --shot -- "$@" || set -- "$@" --shot "$folder/velto.png"
  local picture
  picture=$(valueOf --shot "$@")
  [[ -n $picture ]] || fail '--shot needs a path' 2

  say 'No display: playing a trial on a private desktop with its own X server and sound server'
  say "velto $*"
  rm -rf "$folder"
  mkdir -p "$folder/profile"
  rm -f "$picture"
  local status=0
  "$root/Tests/desk/desk" -- env VELTO_PROFILE_DIR="$folder/profile" timeout -k 5 60 \
    "$program" "$@" || status=$?
  ((status != 125)) || fail 'no private desktop' 125
  ((status == 0)) || fail "velto exited with status $status" "$status"
  [[ -s $picture ]] || fail "no screenshot at $picture"

  local row='"drill":"([a-z]+)".*"correct":(true|false),"error":([^,}]+)' record=$folder/profile/profile.json
  if [[ -s $record && $(<"$record") =~ $row ]]; then
    local verdict='a miss'
    [[ ${BASH_REMATCH[2]} == false ]] || verdict='a hit'
    say "Played and answered a trial, drill ${BASH_REMATCH[1]}: $verdict, error ${BASH_REMATCH[3]}"
    say "Record: $record"
  elif given --answer -- "$@"; then
    fail "the answer was not recorded in $record"
  else
    say 'Played a trial without answering it'
  fi
  say "Screenshot: $picture"
}

# --- Test -----------------------------------------------------------------------------------------

# testWeb [NAME...]: checks the practice page in browsers.
# The browsers that are named, all by default, in $browsers.
chooseBrowsers() {
  local command=$1 browser
  shift
  for browser in "$@"; do
    [[ $browser =~ ^(chromium|firefox|webkit)$ ]] \
      || fail "$command: unexpected argument '$browser'; try ./build.sh help" 2
  done
  (($# > 0)) || set -- chromium firefox webkit
  browsers=("$@")
}

# Builds the page, and provides what drives browsers.
prepareBrowsers() {
  local tests=$root/Tests/web/browser
  provide "${buildPackages[@]}" "${runPackages[@]}" "${deskPackages[@]}" "${webTestPackages[@]}"
  command -v npm >/dev/null || provide npm
  web
  [[ -e $tests/node_modules/.package-lock.json \
    && ! $tests/package-lock.json -nt $tests/node_modules/.package-lock.json ]] \
    || (cd "$tests" && npm ci --no-audit --no-fund)
}

testWeb() {
  local folder=$root/build browser status=0
  local -a browsers
  chooseBrowsers 'test --web' "$@"
  prepareBrowsers
  configure release "$folder" VELTO_BUILD_TESTS=ON
  compile "$folder" --target velto_render_hashes velto_heard_trials velto_answer_by_ear \
    velto_window_states velto_compare_pictures
  for browser in "${browsers[@]}"; do
    say "Testing: the page in $browser; screenshots in build/web-pictures/$browser/"
    (cd "$root" && Tests/desk/desk --size 1920x1200x24 --buffer 250 -- \
      node Tests/web/browser/check.mjs "$browser" build-web "$folder/bin" \
      "$folder/web-pictures/$browser") || status=1
  done
  return "$status"
}

runTests() {
  if [[ ${1-} == --web ]]; then shift; testWeb "$@"; return; fi
  local preset=release folder=$root/build label=default
  local -a extra=() packages=() wrapper=() targets=()
  while (($# > 0)); do
    case $1 in
      --long) label=long packages=("${longPackages[@]}") ;;
      --matrix) label=matrix packages=("${matrixPackages[@]}") ;;
      --systems) shift; compareSystems "$@" ;;
      --asan) preset=asan-ubsan folder=$root/build-asan-ubsan ;;
      --tsan) preset=tsan folder=$root/build-tsan label=threads ;;
      --coverage)
        preset=coverage folder=$root/build-coverage label=lines packages=("${coveragePackages[@]}")
        ;;
      *) extra+=("$1") ;;
    esac
    shift
  done
  provide "${buildPackages[@]}" "${runPackages[@]}" "${deskPackages[@]}" "${testPackages[@]}" \
    "${packages[@]}"
  configure "$preset" "$folder" VELTO_BUILD_TESTS=ON
  case $label in threads | lines) targets=(--target "velto_${label}_tests") ;; esac
  compile "$folder" "${targets[@]}"

  case $preset in
    asan-ubsan | tsan)
      sanitizerOptions
      # The sanitizers' shadow memory collides with the address randomisation of newer kernels.
      if setarch -R true 2>/dev/null; then wrapper=(setarch -R); fi
      ;;
    coverage) find "$folder" -name '*.gcda' -delete ;;
  esac
  say "Testing: $label tests, $preset"
  local log=$folder/tests.log status=0
  "${wrapper[@]}" ctest --test-dir "$folder" -L "^$label\$" --no-tests=error --no-label-summary \
    --output-on-failure -j2 --output-log "$log" "${extra[@]}" || status=$?
  if [[ $preset == coverage ]]; then coverage "$folder" || status=1; fi
  # Print the summary as the last line.
  local summary
  summary=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests failed out of [0-9]+$' "$log" | tail -n 1) || true
  [[ -n $summary ]] || exit "$status"
  local output=$folder/Testing/Temporary/LastTest.log shown skipped
  shown=$(grep -cE '^[0-9]+/[0-9]+ Testing: ' "$output") || true
  ((shown >= ${summary##* })) || fail "$output does not show all tests: no count of the skipped ones"
  skipped=$(skippedTests "$output")
  [[ -z $skipped ]] || printf 'Skipped:\n%s\n' "$skipped"
  printf '%s, %d skipped\n' "$summary" "$(grep -c . <<<"$skipped")"
  exit "$status"
}

# compareSystems [NAME...]: runs and tests this tree in bare systems; see there for the names.
compareSystems() {
  ((EUID == 0)) || fail 'test --systems: only root can make systems'
  provide "${buildPackages[@]}" "${runPackages[@]}" "${deskPackages[@]}" "${testPackages[@]}" \
    "${systemsPackages[@]}"
  configure release "$root/build" VELTO_BUILD_TESTS=ON
  compile "$root/build" --target velto_render_hashes
  exec "$root/Tests/systems/compare-systems" "$root/build/bin/velto_render_hashes" \
    "$root/build/systems" "$@"
}

# skippedTests LOG: prints a line for each test that ctest, or a test program, has skipped: its name
# and the reason.
skippedTests() {
  awk '
    /^[0-9]+\/[0-9]+ Testing: / { name = $3 }
    /^Skipped: / { print "  " name ": " substr($0, 10) }
    /: Skipped$/ {
      place = $1
      sub(/.*\//, "", place)
      getline
      print "  " name ", " place " " $0
    }' "$1"
}

# Each suppression file names libraries that are built without the sanitizer, with the reason. The
# caller's options come last and take precedence.
sanitizerOptions() {
  local files=$root/Tests/sanitizers
  local strict=strict_string_checks=1:detect_stack_use_after_return=1
  export ASAN_OPTIONS="suppressions=$files/addresses.supp:$strict:${ASAN_OPTIONS-}"
  export LSAN_OPTIONS="suppressions=$files/leaks.supp:print_suppressions=0:${LSAN_OPTIONS-}"
  export UBSAN_OPTIONS="print_stacktrace=1:${UBSAN_OPTIONS-}"
  strict=halt_on_error=1:second_deadlock_stack=1
  export TSAN_OPTIONS="suppressions=$files/threads.supp:$strict:${TSAN_OPTIONS-}"
}

# coverage BUILD: prints the line coverage per file, then fails if that of training and synthesis is
# too low.
coverage() {
  local -a report=(gcovr --root "$root/Sources/Velto" --object-directory "$1/Sources/Velto"
    --exclude-throw-branches)
  say 'Line coverage'
  "${report[@]}" --sort-percentage
  say 'Line coverage of training and synthesis'
  "${report[@]}" --fail-under-line 95 "$1"/Sources/Velto/{training,synthesis}
}

# --- Lint -----------------------------------------------------------------------------------------

lint() {
  local quick=false option
  for option in "$@"; do
    case $option in
      --fix) ;;
      --quick) quick=true ;;
      *) fail "lint: unknown option '$option'; try ./build.sh help" 2 ;;
    esac
  done
  provide "${buildPackages[@]}" "${runPackages[@]}" "${deskPackages[@]}" "${testPackages[@]}" \
    "${lintPackages[@]}"
  configure release "$root/build" VELTO_BUILD_TESTS=ON
  local -a folders=("$root/build")
  if ! $quick; then
    provide "${benchPackages[@]}"
    configureBench
    folders+=("$root/build-bench")
  fi
  exec "$root/Tests/lint/lint" "$@" "${folders[@]}"
}

# --- Docs -----------------------------------------------------------------------------------------

docs() {
  provide "${docsPackages[@]}"
  mkdir -p "$root/build/docs"
  (cd "$root" && doxygen Documentation/Doxyfile)
  say 'API reference: build/docs/html/index.html'
}

# --- Package --------------------------------------------------------------------------------------

package() {
  local folder=$root/build-package check=false
  if [[ ${1-} == --check ]]; then check=true; shift; fi
  (($# == 0)) || fail "package: unknown option '$1'; try ./build.sh help" 2
  # shellcheck source=Packaging/release.sh
  (. "$root/Packaging/release.sh"; needMaintainer)
  provide "${buildPackages[@]}" "${runPackages[@]}" "${packagePackages[@]}"
  "$root/Packaging/make" "$folder"
  say "Packages: $folder/release"
  $check || return 0
  provide "${checkPackages[@]}" "${deskPackages[@]}"
  # Its samples are those that the packages' programs have to render.
  configureProgram
  compile "$root/build" --target velto-lab
  "$root/Tests/package/check" "$folder"
}

# --- Web ------------------------------------------------------------------------------------------

web() {
  local modules=$root/build-wasm page=$root/build-web serve=false compiler=
  if [[ ${1-} == --serve ]]; then serve=true; shift; fi
  (($# == 0)) || fail "web: unknown option '$1'; try ./build.sh help" 2
  provide "${webPackages[@]}"
  compiler=$("$root/Tests/matrix/wasm-compiler") || fail 'no clang here has a C++ library for wasm32'
  if ! grep -qs "^CMAKE_CXX_COMPILER:[A-Z]*=.*/$compiler\$" "$modules/CMakeCache.txt"; then
    rm -rf "$modules"
    say 'Configuring the WebAssembly modules in build-wasm/'
    cmake -G Ninja -S "$root/Sources/Velto/web/wasm" -B "$modules" -DCMAKE_BUILD_TYPE=Release \
      -DCMAKE_CXX_COMPILER="$compiler"
  fi
  compile "$modules"
  say 'Putting the page together in build-web/'
  "$root/Sources/Velto/web/page/assemble" "$modules/modules" "$page"
  $serve || return 0
  local port=${VELTO_PORT-8080}
  say "Velto: http://localhost:$port/"
  exec python3 -m http.server "$port" --bind 127.0.0.1 --directory "$page"
}

# --- Bench ----------------------------------------------------------------------------------------

configureBench() {
  configure release "$root/build-bench" CMAKE_BUILD_TYPE=Release VELTO_BUILD_TESTS=OFF \
    VELTO_BUILD_BENCHMARKS=ON
}

benchWeb() {
  local folder=$root/build-bench browser
  local -a browsers
  chooseBrowsers 'bench --web' "$@"
  provide "${buildPackages[@]}" "${runPackages[@]}" "${deskPackages[@]}" "${benchPackages[@]}"
  prepareBrowsers
  configureBench
  compile "$folder" --target velto_render_times
  for browser in "${browsers[@]}"; do
    say "Measuring: the page in $browser"
    (cd "$root" && Tests/desk/desk --size 1920x1200x24 -- \
      node Benchmarks/page/measure.mjs "$browser" build-web "$folder/bin")
  done
}

bench() {
  if [[ ${1-} == --web ]]; then
    shift
    benchWeb "$@"
    return
  fi
  local folder=$root/build-bench
  provide "${buildPackages[@]}" "${runPackages[@]}" "${deskPackages[@]}" "${benchPackages[@]}"
  configureBench
  compile "$folder" --target velto_benchmarks velto_render_once velto velto_resources \
    velto_first_frame velto_bare_window velto_in_use
  rm -f "$folder/run.json"
  "$folder/bin/velto_benchmarks" --benchmark_out="$folder/run.json" --benchmark_out_format=json "$@"
  # Absent if the options name another file.
  if [[ -f $folder/run.json ]]; then
    say 'Beside the reference model, floors and SoX'
    local -a peers=("$folder/peers.json")
    "$root/Benchmarks/peers" "${peers[@]}" || peers=()
    "$root/Benchmarks/table" "$folder/run.json" "${peers[@]}"
  fi
  say 'The first frame'
  "$root/Tests/desk/desk" -- "$folder/bin/velto_first_frame" "$folder/bin/velto" \
    "$folder/bin/velto_bare_window"
  say 'In use: from a key to the screen, processor, memory'
  "$root/Tests/desk/desk" -- "$folder/bin/velto_in_use" "$folder/bin/velto" \
    "$folder/bin/velto_bare_window"
  say 'Instructions of one render'
  "$root/Benchmarks/compare-instructions" "$folder/bin/velto_render_once"
}

# --------------------------------------------------------------------------------------------------

command=${1-build}
(($# == 0)) || shift
case $command in
  build) (($# == 0)) || fail "build: unexpected argument '$1'; try ./build.sh help" 2; build ;;
  run) run "$@" ;;
  test) runTests "$@" ;;
  lint) lint "$@" ;;
  docs) (($# == 0)) || fail "docs: unexpected argument '$1'; try ./build.sh help" 2; docs ;;
  package) package "$@" ;;
  web) web "$@" ;;
  bench) bench "$@" ;;
  help | --help | -h) usage ;;
  *) fail "unknown command '$command'; try ./build.sh help" 2 ;;
esac
