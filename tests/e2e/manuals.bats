#!/usr/bin/env bats
# The manual pages: they render without a warning, the other names lead to the full page,
# and the full page documents every option of the help screen and every exit status.
# Needs no sandbox and no root.

load lib/sandbox

setup() {
  : "${ZET_SOURCE_DIR:?ZET_SOURCE_DIR must name the source directory}"
  export LANG=C
  page=$ZET_SOURCE_DIR/man/zet.8
  command -v groff >/dev/null || skip "groff is not installed"
}

# The page as plain text, without hyphenation or adjustment getting in the way of a search.
rendered() {
  groff -man -Tutf8 -P-cbou -rLL=200n -dAD=l -rHY=0 "$page" 2>/dev/null
}

@test "the full page renders without warnings" {
  run groff -man -ww -z "$page"
  expect_equal status 0 "$status"
  expect_equal warnings "" "$output"
}

@test "the other names source the full page" {
  local name
  for name in installzet removezet upgradezet; do
    expect_equal "$name.8" ".so man8/zet.8" "$(cat "$ZET_SOURCE_DIR/man/$name.8")"
  done
  rendered | grep -q '^NAME' || sandbox_fail "the page renders no NAME section"
  rendered | grep -A1 '^NAME' | grep -q 'zet, installzet, removezet, upgradezet' ||
    sandbox_fail "NAME does not list the four names"
}

@test "every option of the help screens is documented" {
  local text option missing=
  text=$(rendered)
  for option in $(grep -o -- ' --[a-z-]*' "$ZET_SOURCE_DIR/lang/C.lang" | sort -u); do
    grep -Eq -- "(^|[ ,])$option([ ,]|\$)" <<<"$text" || missing+=" $option"
    grep -Eq -- "(^|[ ,])-${option#--}([ ,]|\$)" <<<"$text" || missing+=" -${option#--}"
  done
  expect_equal "options missing from the page" "" "$missing"
}

@test "every exit status is documented" {
  local text code missing=
  text=$(rendered | sed -n '/^EXIT STATUS/,/^FILES/p')
  for code in 0 1 2 3 4 5 6 96 98 255; do
    grep -Eq "^ +$code( |\$)" <<<"$text" || missing+=" $code"
  done
  expect_equal "statuses missing from EXIT STATUS" "" "$missing"
}
