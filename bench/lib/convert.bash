#!/bin/bash
# Turns Debian binary packages into zet packages.
#
#   convert.bash OUTDIR DEB...
#
# Each .deb becomes OUTDIR/NAME-VERSION-ARCH-1.tgz: its data unpacked, with install/
# holding slack-desc (the first line of the description, as "name: text"), deps (the
# short names of Depends), build (a stamp) and, when the tree has symbolic links, a
# doinst.sh that makes them again (the links themselves leave the tree). The archive
# lists install/ first, every directory as "path/" ahead of its contents, and no "./".
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
  echo 22112026 >"$stage/install/build"
  (
    cd "$stage"
    find . -path ./install -prune -o -type l -print | sed 's|^\./||' | LC_ALL=C sort |
      while IFS= read -r link; do
        dir=$(dirname "$link") base=$(basename "$link") target=$(readlink "$link")
        echo "( cd $dir ; rm -rf $base )"
        echo "( cd $dir ; ln -sf $target $base )"
        rm "$link"
      done >install/doinst.sh
    [[ -s install/doinst.sh ]] || rm install/doinst.sh
  )
  find "$stage" -type d -exec chmod 755 {} +
  members=()
  while IFS= read -r path; do
    if [[ -d "$stage/$path" ]]; then members+=("$path/"); else members+=("$path"); fi
  done < <(cd "$stage" && { find install -mindepth 1; find . -mindepth 1 -path ./install -prune -o -print | sed 's|^\./||'; } | LC_ALL=C sort)
  tar -czf "$out/$name-$version-$arch-1.tgz" -C "$stage" --no-recursion --owner=0 --group=0 \
    --numeric-owner -- install/ "${members[@]}"
  echo "$name" >>"$out/names"
done
