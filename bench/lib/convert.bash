#!/bin/bash
# Turns Debian binary packages into zet packages with makezet.
#
#   convert.bash OUTDIR DEB...
#
# Each .deb becomes OUTDIR/NAME-VERSION-ARCH-1.tgz: its data unpacked, with install/
# holding slack-desc (the first line of the description, as "name: text") and deps (the
# short names of Depends), packed by makezet with a build stamp; makezet turns the symbolic
# links into lines of install/doinst.sh. A package that makezet refuses ends the run.
# OUTDIR/names gets the short names, one a line, in the order of the arguments.
set -euo pipefail

out=$1
shift
mkdir -p "$out"
: >"$out/names"
stage=$(mktemp -d)
trap 'rm -rf "$stage"' EXIT

for deb in "$@"; do
  rm -rf "$stage" && mkdir -p "$stage/install"
  dpkg-deb -x "$deb" "$stage"
  name=$(dpkg-deb -f "$deb" Package)
  version=$(dpkg-deb -f "$deb" Version | tr -c 'A-Za-z0-9.+_\n' '_')
  arch=$(dpkg-deb -f "$deb" Architecture)
  summary=$(dpkg-deb -f "$deb" Description | sed -n 1p)
  echo "$name: $summary" >"$stage/install/slack-desc"
  dpkg-deb -f "$deb" Depends | tr ',|' '\n\n' | sed 's/(.*//; s/:.*//; s/[[:space:]]//g' |
    grep -v '^$' | sort -u >"$stage/install/deps" || true
  find "$stage" -type d -exec chmod 755 {} +
  makezet --build 22112026 "$stage" "$out/$name-$version-$arch-1.tgz"
  echo "$name" >>"$out/names"
done
