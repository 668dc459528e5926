# Sourced by run and test: finds or installs what a build needs.
#
# Packages are those of Debian and its derivatives. Where there is no apt, the script says
# what to install and goes on; configuring then tells what is missing.

packages_build="g++ cmake ninja-build pkg-config"
packages_tool="$packages_build libgmime-3.0-dev libcli11-dev nlohmann-json3-dev"
packages_tests="$packages_tool libgtest-dev libicu-dev libssl-dev nettle-dev"
packages_release="$packages_tests python3 clang-format"
packages_asan="$packages_tests"
packages_windows="$packages_tool g++-mingw-w64-x86-64-posix googletest wine wine64"
packages_fuzz="$packages_build clang"
packages_browser="$packages_tests python3 chromium chromium-driver"
packages_bench="$packages_tool libbenchmark-dev libicu-dev libssl-dev nettle-dev libgcrypt20-dev libuchardet-dev libonig-dev nkf"

say() { printf '%s\n' "$*" >&2; }

fail() {
  say "$*"
  exit 2
}

# Prints those of the named packages that are not installed.
missing_packages() {
  local name
  for name in "$@"; do
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || printf '%s ' "$name"
  done
}

as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    return 127
  fi
}

# need_packages GROUP PACKAGE...: installs what is missing. A stamp remembers the answer, so
# that a second call costs nothing.
need_packages() {
  local group=$1 stamp="$root/build/.packages-$1" missing
  shift
  [ -f "$stamp" ] && [ "$(cat "$stamp")" = "$*" ] && return
  mkdir -p "$root/build"
  if ! command -v apt-get >/dev/null; then
    say "This system has no apt. If the build fails, install what these Debian packages hold: $*"
    return
  fi
  missing=$(missing_packages "$@")
  if [ -n "$missing" ]; then
    say "Installing: $missing"
    # shellcheck disable=SC2086 # a list of names
    { as_root apt-get update -q && as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -q -y --no-install-recommends $missing; } >"$root/build/packages-$group.log" 2>&1 ||
      { tail -n 5 "$root/build/packages-$group.log" >&2; fail "Please install these packages: $missing"; }
  fi
  printf '%s' "$*" >"$stamp"
}

# The sanitizer and fuzzer runtime is a package of the compiler's own version.
clang_runtime_package() {
  local version
  version=$(clang++ -dumpversion 2>/dev/null | cut -d. -f1)
  [ -n "$version" ] && printf 'libclang-rt-%s-dev' "$version"
}

# quietly LOG COMMAND...: shows the output only when the command fails.
quietly() {
  local log=$1
  shift
  if ! "$@" >"$log" 2>&1; then
    tail -n 60 "$log" >&2
    fail "Failed: $* (the whole output is in $log)"
  fi
}
