# Shared by the scripts: packages and builds. Source it from bash in the top directory of the project.

# Needed to build, for the demo and for the tests.
packages=(
  g++ cmake ninja-build pkg-config
  libcurl4-openssl-dev libssl-dev zlib1g-dev
  libjansson-dev libace-dev libtomlplusplus-dev
  libsqlite3-dev libcpp-httplib-dev
  libgtest-dev libgmock-dev gettext python3 tzdata jq strace
  zsh busybox fish bash-completion
  mandoc groff-base
)

# Also needed for the checks of continuous integration.
check_packages=(clang-format clang-tidy gcovr valgrind)

# Also needed for mutation testing.
mutation_packages=(python3-clang-14)

# Also needed for the benchmark.
bench_packages=(nginx-core curl git iproute2)

# Also needed for fuzzing: clang with libFuzzer and the sanitizers.
fuzz_packages=(clang libclang-rt-14-dev)

# Also needed to make and test packages: rpm, a linter for each kind of package, and the programs with
# which an administrator looks after the installed tool.
package_packages=(git dpkg-dev file rpm lintian rpmlint logrotate acl iproute2)

say() { printf '\n== %s\n' "$*"; }

# Prints the packages among the arguments that are not installed.
missing_packages() {
  local package
  for package in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      printf '%s\n' "$package"
  done
}

# Installs those of the named packages that are missing; needs root or sudo only if there are any.
install_packages() {
  local missing apt
  mapfile -t missing < <(missing_packages "$@")
  [ ${#missing[@]} -eq 0 ] && return 0
  say "Installing ${missing[*]}"
  apt=(env DEBIAN_FRONTEND=noninteractive apt-get -o Dpkg::Use-Pty=0)
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
      echo "These packages are missing: ${missing[*]}" >&2
      echo "Install them as root, or install sudo, and start again." >&2
      return 1
    }
    apt=(sudo "${apt[@]}")
  fi
  "${apt[@]}" -q update
  "${apt[@]}" -q install -y --no-install-recommends "${missing[@]}"
}

# install_packages for a list with nginx. Keeps the web server from starting, now and at boot, unless
# the system already has a policy for services.
install_packages_and_nginx() {
  local policy=/usr/sbin/policy-rc.d as=()
  [ "$(id -u)" -eq 0 ] || as=(sudo)
  if [ -z "$(missing_packages nginx-core)" ] || [ -e "$policy" ] ||
    ! command -v "${as[0]:-true}" >/dev/null; then
    install_packages "$@"
    return
  fi
  (
    trap '"${as[@]}" rm -f "$policy"' EXIT
    # Exit status 101 forbids the start.
    printf '#!/bin/sh\nexit 101\n' | "${as[@]}" tee "$policy" >/dev/null
    "${as[@]}" chmod 755 "$policy"
    install_packages "$@"
    "${as[@]}" /usr/sbin/update-rc.d nginx disable
  )
}

# build PRESET [TARGET...]: configures and builds.
build() {
  local preset=$1
  shift
  say "Building the $preset preset"
  mkdir -p build
  cmake --preset "$preset" ${CMAKE_FLAGS:-} >"build/$preset-configure.log" 2>&1 || {
    cat "build/$preset-configure.log" >&2
    return 1
  }
  cmake --build --preset "$preset" ${1:+--target "$@"}
}

# run_tests PRESET [CTEST-ARGUMENT...]: runs the tests and ends with one line of counts.
run_tests() {
  local preset=$1 result=0
  shift
  say "Testing the $preset preset"
  ctest --preset "$preset" -j "$(nproc)" --output-junit "$PWD/build/$preset/tests.xml" "$@" \
    >"build/$preset/tests.log" 2>&1 || result=$?
  [ $result -eq 0 ] || sed -n '/Failed\|\*\*\*/p; /^The following tests FAILED/,$p' \
    "build/$preset/tests.log"
  python3 scripts/count-tests "build/$preset/tests.xml" || result=1
  [ $result -eq 0 ] || echo "The whole output is in build/$preset/tests.log" >&2
  return $result
}
