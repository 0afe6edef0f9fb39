# SPDX-License-Identifier: MIT
# shellcheck shell=bash
#
# What ./run and ./check share: packages, build folders, messages. Sourced by bash; expects `root` to be the source tree.
: "${root:?}"

PATH=$PATH:/usr/sbin:/sbin # setcap and getcap stand there, and users do not have it
export LC_ALL=C.UTF-8

say() { printf '%s: %s\n' "${0##*/}" "$*"; }
die() { say "$*" >&2; exit 1; }

# listed GROUP...: the lines "package [command]" of these groups of packages.txt.
listed() {
  awk -v groups=" $* " '
    { sub(/#.*/, "") }
    /^\[/ { gsub(/[][ \t]/, ""); wanted = index(groups, " " $0 " "); next }
    wanted && NF && !seen[$1]++ { print $1, $2 }' "$root/packages.txt"
}

# missing GROUP...: the packages of these groups that are not installed. Asks dpkg once.
missing() {
  local package command
  local -A installed=()
  # shellcheck disable=SC2016 # the ${...} are dpkg-query's
  while read -r package; do installed[$package]=1; done < <(
    listed "$@" | cut -d' ' -f1 | xargs dpkg-query -W -f '${db:Status-Status} ${Package}\n' 2>/dev/null |
      sed -n 's/^installed //p')
  while read -r package command; do
    [ -n "${installed[$package]:-}" ] && continue
    [ -n "$command" ] && command -v "$command" >/dev/null && continue
    printf '%s\n' "$package"
  done < <(listed "$@")
}

# as_root COMMAND...: directly, or with sudo. A run that nobody watches is never left waiting for a password.
as_root() {
  if [ "$(id -u)" = 0 ]; then
    "$@"
  elif ! command -v sudo >/dev/null; then
    say "this needs root and there is no sudo; run as root: $*" >&2
    return 1
  elif [ -t 0 ] && [ -z "${CI:-}" ]; then
    sudo "$@"
  elif ! sudo -n "$@"; then
    say "sudo refused or wants a password; run as root: $*" >&2
    return 1
  fi
}

# A throw-away machine need not survive a power cut while it installs, which saves minutes.
apt_get() {
  local options=(-y -q -o Dpkg::Use-Pty=0 -o DPkg::Lock::Timeout=120)
  [ -n "${CI:-}" ] && options+=(-o Dpkg::Options::=--force-unsafe-io)
  as_root env DEBIAN_FRONTEND=noninteractive apt-get "${options[@]}" "$@"
}

# A minimal image may bring its site's certificates as a bare bundle, without the package ca-certificates; installing that
# package replaces the bundle. A copy stays for the clients that need the site's own (npm behind an inspecting proxy).
site_certificates=$root/build/site-certificates.pem
keep_site_certificates() {
  local bundle=/etc/ssl/certs/ca-certificates.crt
  [ -f "$bundle" ] || return 0
  [ "$(dpkg-query -W -f '${db:Status-Status}' ca-certificates 2>/dev/null)" = installed ] && return 0
  mkdir -p "$root/build" && cp "$bundle" "$site_certificates"
}

# install_packages GROUP...: installs what is missing and says so; does not call apt when nothing is.
# The package lists are fetched only when they are absent or when installing with them failed.
install_packages() {
  local packages updated=
  mapfile -t packages < <(missing "$@")
  [ ${#packages[@]} -eq 0 ] && return 0
  if ! command -v apt-get >/dev/null; then
    say "no apt here, so nothing is installed; on Debian this would be: ${packages[*]}"
    return 0
  fi
  say "installing ${#packages[@]} Debian packages: ${packages[*]}"
  keep_site_certificates
  if ! compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null; then
    apt_get update || die "the package lists could not be fetched"
    updated=yes
  fi
  apt_get install --no-install-recommends "${packages[@]}" && return 0
  [ -z "$updated" ] && say "trying again with fresh package lists" && apt_get update &&
    apt_get install --no-install-recommends "${packages[@]}" && return 0
  die "these packages are not installed: $(missing "$@" | tr '\n' ' ')"
}

# drop_foreign_cache FOLDER: forgets CMake's notes in a build folder that belongs to another source tree (a copied checkout).
drop_foreign_cache() {
  local home
  home=$(sed -n 's/^CMAKE_HOME_DIRECTORY:INTERNAL=//p' "$1/CMakeCache.txt" 2>/dev/null)
  if [ -n "$home" ] && [ "$home" != "$root" ]; then
    say "$1 was set up for $home; setting it up anew"
    rm -rf "$1/CMakeCache.txt" "$1/CMakeFiles"
  fi
}
