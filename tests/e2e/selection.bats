#!/usr/bin/env bats
# Selecting packages: the words of the command line become loaded packages, from package
# files or from the database, before anything is done. A word that cannot be loaded ends
# the run with its error and status; a run that loads everything ends with status 0 and
# installs nothing. The output is in the test language "T", which prints each key and its
# arguments.

load lib/sandbox

setup() {
  sandbox_setup
  sandbox_install_test_lang
}
teardown() { sandbox_teardown; }

# mkpkg NAME MEMBER...: a package file /tmp/NAME in the sandbox.
mkpkg() {
  local name=$1
  shift
  "$ZET_SOURCE_DIR/tests/fixtures/mkpkg" "$SANDBOX/tmp/$name" "$@"
}

good_members=(install/ 'install/slack-desc=a: the test package\n' usr/ usr/a=x)

# expect_refused CMDLINE STATUS STDERR: the run ends with STATUS after exactly STDERR, and
# leaves no scratch directory and no installed file behind.
expect_refused() {
  sandbox_run "LANG=T $1 --no-colors"
  expect_status "$2"
  expect_stderr "$3"
  expect_missing '/tmp/zet-*' /usr/a
}

# expect_loaded CMDLINE: everything loads and the run ends with 0; every package is tagged
# to be skipped, so that nothing gets installed.
expect_loaded() {
  sandbox_run "LANG=T $1 --priority SKP --no-colors"
  expect_status 0
  expect_stderr ''
  expect_missing '/tmp/zet-*' /usr/a
}

@test "a package file that is missing, misnamed or no archive ends the run with its status" {
  expect_refused 'installzet /tmp/nothing.tgz' 4 $'ERROR: ErrorFileDoNotExist /tmp/nothing.tgz\n'

  sandbox_run 'echo zip >/tmp/a.zip'
  expect_refused 'installzet /tmp/a.zip' 3 $'ERROR: ErrorNotValidPackageName /tmp/a.zip\n'

  # tar's own complaint may come first.
  sandbox_run 'echo plain text >/tmp/x.tgz'
  sandbox_run 'LANG=T installzet /tmp/x.tgz --no-colors'
  expect_status 1
  [[ "$stderr" == *$'ERROR: ErrorUnknownTar\n' ]] ||
    sandbox_fail "stderr does not end in ErrorUnknownTar: $(_quoted "$stderr")"
  expect_missing '/tmp/zet-*'
}

@test "a size listing that gives nothing ends the run with ErrorUnknownGzip" {
  mkpkg a-1.0-i386-1.tgz "${good_members[@]}"
  sandbox_run 'rm /lib/zetutils/gzip && printf "#!/bin/sh\nexit 0\n" >/lib/zetutils/gzip &&
    chmod 755 /lib/zetutils/gzip'
  expect_refused 'installzet /tmp/a-1.0-i386-1.tgz' 2 $'ERROR: ErrorUnknownGzip\n'
}

@test "removing or upgrading a package that is not installed, or whose record is unreadable" {
  expect_refused 'removezet foo' 3 $'ERROR: ErrorPackageNotInstalled foo\n'
  # The file of the upgrade is never opened: it does not even exist.
  expect_refused 'upgradezet /tmp/b-1.0-i386-1.tgz' 3 \
    $'ERROR: ErrorPackageNotInstalled /tmp/b-1.0-i386-1.tgz\n'

  # The listing finds the record by its name, but it cannot be opened.
  sandbox_run 'ln -s /nowhere /var/log/packages/foo-1.0-i386-1'
  expect_refused 'removezet foo' 3 $'ERROR: ErrorFileDoNotExist ///var/log/packages/foo\n'
}

@test "a package already installed is refused unless --force skips the test" {
  printf 'PACKAGE NAME:     a-1.0-i386-1\n' | sandbox_write /var/log/packages/a-1.0-i386-1
  mkpkg a-1.0-i386-1.tgz "${good_members[@]}"
  expect_refused 'installzet /tmp/a-1.0-i386-1.tgz' 6 \
    $'ERROR: ErrorPackageAlreadyInstalled /tmp/a-1.0-i386-1.tgz\n'
  expect_loaded 'installzet --force /tmp/a-1.0-i386-1.tgz'
}

@test "an archive without install/ is reported, then the run aborts and leaves its scratch directory" {
  mkpkg a-1.0-i386-1.tgz usr/ usr/a=x
  sandbox_run 'LANG=T installzet /tmp/a-1.0-i386-1.tgz --no-colors'
  expect_status 134
  expect_stderr_line 'ERROR: ErrorPackageNotComplete /tmp/a-1.0-i386-1.tgz'
  [[ "$stderr" == *"Unhandled error"* ]] || sandbox_fail "no assertion: $(_quoted "$stderr")"
  expect_exists '/tmp/zet-*'
  expect_missing /usr/a
}

@test "good packages load and nothing is installed; the first bad word ends the run" {
  mkpkg a-1.0-i386-1.tgz "${good_members[@]}"
  mkpkg b-1.0-i386-1.tgz install/ usr/ usr/b=y
  expect_loaded 'installzet /tmp/a-1.0-i386-1.tgz'
  expect_loaded 'installzet /tmp/a-1.0-i386-1.tgz /tmp/b-1.0-i386-1.tgz'
  expect_missing /usr/b

  expect_refused 'installzet /tmp/a-1.0-i386-1.tgz /tmp/nothing.tgz' 4 \
    $'ERROR: ErrorFileDoNotExist /tmp/nothing.tgz\n'
  sandbox_run 'echo zip >/tmp/b.zip'
  expect_refused 'installzet /tmp/a-1.0-i386-1.tgz /tmp/b.zip' 3 \
    $'ERROR: ErrorNotValidPackageName /tmp/b.zip\n'
}

@test "a word that the tag file in the working directory skips is never loaded" {
  printf 'nothing: SKP\n' | sandbox_write /srv/e2e/tagfile
  sandbox_run 'cd /srv/e2e && LANG=T installzet /tmp/nothing-1.0-i386-1.tgz --no-colors'
  expect_status 0
  expect_stderr ''
  expect_missing '/tmp/zet-*'
}
