#!/usr/bin/env bats
# The dependency verdict of a run, end to end: install/deps names short names that must be
# installed or installed together; a removal must not leave a package without what it
# names. p needs q, r needs p, q needs nothing. The output is in the test language "T".

load lib/sandbox

setup() {
  sandbox_setup
  sandbox_install_test_lang
  # Each entry is a package name, a colon, and the one package it depends on, if any.
  local entry name members
  for entry in p:q q: r:p; do
    name=${entry%:*}
    members=(install/ "install/slack-desc=$name: the package\n")
    [[ -z "${entry#*:}" ]] || members+=("install/deps=${entry#*:}\n")
    "$ZET_SOURCE_DIR/tests/fixtures/mkpkg" "$SANDBOX/tmp/$name-1.0-noarch-1.tgz" "${members[@]}" \
      zt/ "zt/$name=$name"
  done
  # Every run checks, as the configuration says so.
  printf '[zet]\ndeps=yes\n' | sandbox_write /etc/zet.conf
}
teardown() { sandbox_teardown; }

# zet PROGRAM WORD...: runs the program in the test language, without colours.
zet() { sandbox_run "LANG=T $1 --no-colors ${*:2}"; }

# installing NAME...: what installing those packages prints, but for the two line ends at the
# end, which a command substitution drops.
installing() {
  local name
  for name in "$@"; do
    printf 'MessageInstallingPackage %s-1.0-noarch-1\nMessagePackageDescription\n%s: the package\n\n' \
      "$name" "$name"
  done
}

@test "an install whose dependency nothing provides is refused with the list, status 5" {
  zet installzet /tmp/p-1.0-noarch-1.tgz
  expect_status 5
  expect_stderr $'ERROR: ErrorDepsNotMet\n'
  expect_stdout $'q\n'
  expect_missing /zt /var/log/packages/p-1.0-noarch-1

  # --show-deps only lists, even with --nodeps; with nothing missing it prints nothing.
  local words
  for words in '--show-deps /tmp/p-1.0-noarch-1.tgz' '--show-deps --nodeps /tmp/p-1.0-noarch-1.tgz'; do
    zet installzet $words
    expect_status 0
    expect_stderr ''
    expect_stdout $'q\n'
  done
  zet installzet --show-deps /tmp/q-1.0-noarch-1.tgz
  expect_status 0
  expect_stdout ''
  expect_missing /zt /var/log/packages/p-1.0-noarch-1 /var/log/packages/q-1.0-noarch-1

  zet installzet --nodeps /tmp/p-1.0-noarch-1.tgz
  expect_status 0
  expect_stdout "$(installing p)"$'\n\n'
  expect_exists /zt/p /var/log/packages/p-1.0-noarch-1 /var/log/deps/p-1.0-noarch-1
}

@test "another word of the same command line satisfies a dependency, in either order" {
  zet installzet /tmp/p-1.0-noarch-1.tgz /tmp/q-1.0-noarch-1.tgz
  expect_status 0
  expect_stdout "$(installing p q)"$'\n\n'

  # Removing a package together with the one that needs it is no complaint.
  zet removezet q p
  expect_status 0
  expect_stderr ''
  expect_missing /zt /var/log/packages/p-1.0-noarch-1 /var/log/packages/q-1.0-noarch-1

  zet installzet /tmp/q-1.0-noarch-1.tgz /tmp/p-1.0-noarch-1.tgz
  expect_status 0
  expect_stdout "$(installing q p)"$'\n\n'
}

@test "the first run without /etc/zet.conf checks, and leaves deps=no for the next runs" {
  sandbox_run 'rm /etc/zet.conf'
  zet installzet /tmp/p-1.0-noarch-1.tgz
  expect_status 5
  expect_stdout $'q\n'
  expect_file_content /etc/zet.conf $'[zet]\ndeps=no\n'

  zet installzet /tmp/p-1.0-noarch-1.tgz
  expect_status 0
  expect_stderr ''
  expect_exists /zt/p /var/log/packages/p-1.0-noarch-1
}

@test "removing a package that others need is refused with them, unless --with-deps takes them too" {
  zet installzet /tmp/q-1.0-noarch-1.tgz /tmp/p-1.0-noarch-1.tgz /tmp/r-1.0-noarch-1.tgz
  expect_status 0

  local words
  for words in q '--show-deps q'; do
    zet removezet $words
    expect_status 5
    expect_stderr $'ERROR: ErrorDepsRequired\n'
    expect_stdout $'p\nr\n'
  done
  zet removezet --show-deps --with-deps q
  expect_status 0
  expect_stderr $'ERROR: ErrorDepsRequired\n'
  expect_stdout $'p\nr\n'
  expect_exists /zt/p /zt/q /zt/r /var/log/packages/{p,q,r}-1.0-noarch-1

  # The closure: p needs q, r needs p. The dependents go after the group, level by level.
  zet removezet --with-deps q
  expect_status 0
  expect_stderr $'ERROR: ErrorDepsRequired\n'
  expect_stdout 'p
r
MessageRemovingPackage q-1.0-noarch-1
MessageDeletingFile //zt/q
MessageFileFoundInAnotherPackage //zt/
MessageRemovingPackage p-1.0-noarch-1
MessageDeletingFile //zt/p
MessageFileFoundInAnotherPackage //zt/
MessageRemovingPackage r-1.0-noarch-1
MessageDeletingFile //zt/r
MessageDeletingEmptyDirectory //zt/
'
  expect_missing /zt /var/log/packages/{p,q,r}-1.0-noarch-1 /var/log/deps/{p,r}-1.0-noarch-1
}
