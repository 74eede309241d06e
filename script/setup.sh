# Sourced by run, test and lint: where the project is, and the packages that its tools need.
# shellcheck shell=bash

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '%s\n' "$*" >&2; }

# Runs a command without its output, unless it fails: then all of it goes to standard error.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 </dev/null || status=$?
  if ((status != 0)); then
    cat "$log" >&2
    say "Failed: $*"
  fi
  rm -f "$log"
  return "$status"
}

# The packages of the given uses (run, test, x86, lint), one a line.
packages_for() {
  awk -F '|' -v uses=" $* " '
    /^\| `/ { gsub(/[ `]/, "", $2); gsub(/ /, "", $3); if (index(uses, " " $3 " ")) print $2 }
  ' "$root/docs/dependencies.md"
}

missing_packages() {
  local -a needed
  mapfile -t needed < <(packages_for "$@")
  printf '%s\n' "${needed[@]}" | grep -vxFf <(
    dpkg-query --show --showformat='${db:Status-Status} ${Package}\n' "${needed[@]}" 2>/dev/null |
      sed -n 's/^installed //p'
  )
}

as_administrator() {
  if ((EUID == 0)); then
    "$@"
  else
    sudo "$@"
  fi
}

# Installs what is missing for the given uses. Says so in one line, and nothing where all is there.
install_packages() {
  if ! command -v dpkg-query >/dev/null; then
    say "No Debian packages here: docs/dependencies.md lists what has to be installed by hand."
    return 0
  fi
  local -a missing
  mapfile -t missing < <(missing_packages "$@")
  ((${#missing[@]} > 0)) || return 0
  if ((EUID != 0)) && ! command -v sudo >/dev/null; then
    say "Missing packages, and no sudo to install them with. As root: apt-get install ${missing[*]}"
    return 1
  fi
  say "Installing ${missing[*]}"
  as_administrator true # asks for the password, if one is needed, while the terminal is still there
  quietly as_administrator apt-get update
  quietly as_administrator env DEBIAN_FRONTEND=noninteractive \
    apt-get install --yes --no-install-recommends -o DPkg::Lock::Timeout=300 "${missing[@]}"
}
