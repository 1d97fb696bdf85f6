# Shared by the scripts here: where the project is, how to speak, how to become root. Sourced, not run.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc)
no_source=3  # scripts/setup ends with it when a library's source package can't be had

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

installed() { [ "$(dpkg-query -W -f='${Status}' "$1" 2>/dev/null)" = "install ok installed" ]; }
offered() { [ -n "$(apt-cache policy "$1" 2>/dev/null | sed -n '/Candidate: [^(]/p')" ]; }

# missing_packages ENTRY...: what of them is to be installed. An entry is a package or alternatives, "clang-16|clang": the
# first that this release has. One that ends in "|" is for releases that have it.
missing_packages() {
  local entry names name
  for entry; do
    IFS='|' read -ra names <<<"$entry"
    name=${names[0]}
    if [ "$name" != "$entry" ] && ! installed "$name"; then
      for name in "${names[@]}" ""; do
        [ -z "$name" ] || ! offered "$name" || break
      done
      [ -n "$name" ] || case $entry in *'|') continue ;; *) name=${names[0]} ;; esac
    fi
    installed "$name" || printf '%s ' "$name"
  done
}

# install_packages ENTRY...: those that are missing. True when there were any.
install_packages() {
  local missing
  missing=$(missing_packages "$@")
  [ -n "$missing" ] || return 1
  quietly apt-update as_root apt-get update
  missing=$(missing_packages "$@") # the new lists may offer another alternative
  say "installing: $missing"
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
