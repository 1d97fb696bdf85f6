# Shared by the scripts here: where the project is, how to speak, how to become root. Sourced, not run.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)

say() { printf '%s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 1; }

# as_root COMMAND...: with sudo where this user is not root.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else
    command -v sudo >/dev/null || die "'$1' needs root: run this as root or install sudo"
    sudo "$@"
  fi
}

# quietly LOGNAME COMMAND...: shows the output only when the command fails.
quietly() {
  local log="$root/build/log/$1.txt"
  shift
  mkdir -p "$(dirname "$log")"
  "$@" >"$log" 2>&1 || { tail -n 60 "$log" >&2; die "'$*' failed; all of its output: $log"; }
}

# install_packages PACKAGE...: those that are missing. True when there were any.
install_packages() {
  local package missing=""
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || missing="$missing $package"
  done
  [ -n "$missing" ] || return 1
  say "installing:$missing"
  quietly apt-update as_root apt-get update
  # shellcheck disable=SC2086
  quietly apt-install as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
}

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  [ -f "$root/build/$preset/build.ninja" ] || quietly "configure-$preset" cmake -S "$root" --preset "$preset"
  quietly "build-$preset" cmake --build "$root/build/$preset" -j "$jobs" ${1:+--target "$@"}
}
