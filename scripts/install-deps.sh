#!/usr/bin/env bash
# Installs the packages Tavix needs to build and test, only those that are missing.
set -euo pipefail

# Every package the build and the tests need. To add a dependency, add it to this list.
PACKAGES=(
  # compilers and build tools
  build-essential cmake ninja-build pkgconf ccache
  # libraries of the core
  libeigen3-dev libboost-math-dev libcurl4-openssl-dev
  # figures: PLplot with its cairo drivers, and libjpeg for JPEG export
  libplplot-dev plplot-driver-cairo libjpeg-dev
  # the window front end and the terminal console
  libwxgtk3.2-dev libedit-dev
  # tests and helper scripts; the window is tested under a virtual X server
  libgtest-dev python3 xvfb xauth x11-utils imagemagick
)

# True when dpkg knows the package as fully installed.
is_installed() {
  local status
  status=$(dpkg-query -W -f='${db:Status-Abbrev}' "$1" 2>/dev/null) || return 1
  [[ $status == ii* ]]
}

if ! command -v dpkg-query >/dev/null 2>&1 || ! command -v apt-get >/dev/null 2>&1; then
  echo "install-deps: this script needs dpkg and apt-get (Debian or Ubuntu)." >&2
  echo "install-deps: install these packages by other means: ${PACKAGES[*]}" >&2
  exit 1
fi

missing=()
for package in "${PACKAGES[@]}"; do
  is_installed "$package" || missing+=("$package")
done

if ((${#missing[@]} == 0)); then
  echo "install-deps: all ${#PACKAGES[@]} packages are installed; nothing to do."
  exit 0
fi

echo "install-deps: missing: ${missing[*]}"

# apt needs root: run it directly as root, otherwise through sudo.
as_root=()
if ((EUID != 0)); then
  if ! command -v sudo >/dev/null 2>&1; then
    echo "install-deps: not root and sudo is not available; install as root: ${missing[*]}" >&2
    exit 1
  fi
  as_root=(sudo)
fi

apt_env=(env DEBIAN_FRONTEND=noninteractive)
"${as_root[@]}" "${apt_env[@]}" apt-get update -q
"${as_root[@]}" "${apt_env[@]}" apt-get install -y -q "${missing[@]}" </dev/null
echo "install-deps: installed ${missing[*]}"
