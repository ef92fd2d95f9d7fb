#!/usr/bin/env bats
# Bad input of every kind, each with the outcome the program promises for it, and each run
# against a machine where the package "g" is already installed: whatever a bad run does, the
# files of "g" and its database entries stay as they were, byte for byte. The output is in
# the test language "T", which prints each key and its arguments.

load lib/sandbox

G=g-1.0-noarch-1

setup() {
  sandbox_setup
  sandbox_install_test_lang
  mkpkg $G.tgz install/ 'install/slack-desc=g: the good package\n' \
    'install/doinst.sh=( cd zg ; rm -rf ln )\n( cd zg ; ln -sf g.txt ln )\n' \
    zg/ 'zg/g.txt=good\n' 'zg/tool@755=#!/bin/sh\n'
  mkpkg b-1.0-noarch-1.tgz install/ 'install/slack-desc=b: another package\n' zb/ 'zb/b.txt=b\n'
  sandbox_run "LANG=T installzet --nodeps --no-colors /tmp/$G.tgz"
  expect_status 0
  g_state >"$SANDBOX/g.before"
}
teardown() { sandbox_teardown; }

# mkpkg NAME MEMBER...: a package file /tmp/NAME in the sandbox.
mkpkg() {
  local name=$1
  shift
  "$ZET_SOURCE_DIR/tests/fixtures/mkpkg" "$SANDBOX/tmp/$name" "$@"
}

# What "g" is on the disk: each of its paths and database entries with type, mode, size,
# modification time and content digest.
g_state() {
  _sandbox_check "cd / && for p in zg zg/g.txt zg/tool zg/ln var/log/*/$G; do
      stat -c '%n %F %a %s %Y' \$p && { [ -d \$p ] || md5sum \$p; }; done" || return 1
  cat "$SANDBOX/check.out"
}

expect_g_untouched() {
  g_state >"$SANDBOX/g.after" || return 1
  cmp -s "$SANDBOX/g.before" "$SANDBOX/g.after" ||
    sandbox_fail "the installed package changed after: $SB_LAST_COMMAND" \
      "$(diff "$SANDBOX/g.before" "$SANDBOX/g.after")"
}

# run_bad CMDLINE STATUS: the run ends with STATUS and leaves "g" as it was.
run_bad() {
  sandbox_run "LANG=T $1 --no-colors"
  expect_status "$2"
  expect_g_untouched
}

expect_stderr_ends() {
  [[ "$stderr" == *"$1" ]] || sandbox_fail "stderr does not end in $(_quoted "$1"):" \
    "  $(_quoted "$stderr")" "  after: $SB_LAST_COMMAND"
}

@test "archives that tar cannot list end the run with ErrorUnknownTar and status 1" {
  sandbox_run 'head -c 200 /tmp/b-1.0-noarch-1.tgz >/tmp/cut-1.0-noarch-1.tgz &&
    : >/tmp/empty-1.0-noarch-1.tgz &&
    mkdir /srv/p && echo x >/srv/p/f && tar -cf /tmp/plain-1.0-noarch-1.tgz -C /srv/p f'
  local word
  for word in cut empty plain; do
    run_bad "installzet --nodeps /tmp/$word-1.0-noarch-1.tgz" 1
    expect_stderr_ends $'ERROR: ErrorUnknownTar\n'
    expect_stdout ''
    expect_missing '/tmp/zet-*'
  done
}

@test "an archive without an install/ line stops on the assertion after ErrorPackageNotComplete" {
  mkpkg none-1.0-noarch-1.tgz zb/ zb/x=x
  mkpkg dot-1.0-noarch-1.tgz ./install/ './install/slack-desc=dot: listed with ./\n' ./zb/ ./zb/x=x
  local word
  for word in none dot; do
    run_bad "installzet --nodeps /tmp/$word-1.0-noarch-1.tgz" 134
    [[ "$stderr" == $'ERROR: ErrorPackageNotComplete /tmp/'$word$'-1.0-noarch-1.tgz\n'*"Unhandled error"* ]] ||
      sandbox_fail "not the message and then the assertion: $(_quoted "$stderr")"
    # An assertion removes nothing: the scratch directory stays behind.
    expect_exists '/tmp/zet-*'
    expect_missing /zb
    sandbox_run 'rm -rf /tmp/zet-*'
  done
}

@test "a path with a blank reaches the shell unquoted, which splits it" {
  sandbox_run 'mkdir "/tmp/my dir" && cp /tmp/b-1.0-noarch-1.tgz "/tmp/my dir/"'
  run_bad 'installzet --nodeps "/tmp/my dir/b-1.0-noarch-1.tgz"' 1
  # tar is handed /tmp/my as the archive.
  [[ "$stderr" == *"/tmp/my: Cannot open"* ]] || sandbox_fail "tar did not open /tmp/my: $(_quoted "$stderr")"
  expect_stderr_ends $'ERROR: ErrorUnknownTar\n'
  expect_missing /zb '/var/log/packages/b-*' '/tmp/zet-*'
}

@test "a record that cannot be read gives ErrorFileDoNotExist with the database path, status 3" {
  sandbox_run 'ln -s /nowhere /var/log/packages/gone-1.0-noarch-1'
  run_bad 'removezet gone' 3
  expect_stderr $'ERROR: ErrorFileDoNotExist ///var/log/packages/gone\n'
  expect_missing '/tmp/zet-*'
}

@test "a missing tool is reported and the run goes on" {
  sandbox_run 'rm /lib/zetutils/dialog'
  run_bad 'installzet --nodeps /tmp/b-1.0-noarch-1.tgz' 0
  expect_stderr $'ERROR: ErrorRequiredAppDoNotExists /lib/zetutils/dialog\n'
  expect_file_content /zb/b.txt $'b\n'
}

@test "a tag file that cannot be read is no error" {
  run_bad 'installzet --nodeps --tagfile /nonexistent /tmp/b-1.0-noarch-1.tgz' 0
  expect_stderr ''
  expect_file_content /zb/b.txt $'b\n'
}

@test "a language file that ends inside a continued sentence loses only that sentence" {
  sandbox_run 'cp /usr/share/zet/lang/T.lang /usr/share/zet/lang/U.lang &&
    printf "HelpZet=never stored\\\\\\n" >>/usr/share/zet/lang/U.lang && tail -n 1 /usr/share/zet/lang/U.lang'
  expect_stdout $'HelpZet=never stored\\\n'
  sandbox_run 'LANG=U zet --help --no-colors'
  expect_status 0
  expect_stdout_line 'HelpZet 1.0rc1'
  expect_g_untouched
}

@test "a root that does not exist is made with its parents and used" {
  run_bad 'installzet --nodeps --root /nonexistent/deep /tmp/b-1.0-noarch-1.tgz' 0
  expect_file_content /nonexistent/deep/zb/b.txt $'b\n'
  expect_exists /nonexistent/deep/var/log/packages/b-1.0-noarch-1
  expect_missing /zb /var/log/packages/b-1.0-noarch-1
}

@test "a read-only root: tar's failure goes unnoticed, nothing lands, and the status is 0" {
  # Root is not stopped by file modes, so the root is a read-only bind mount, made in the
  # same private namespace as the run.
  sandbox_run 'mkdir /ro && mount --bind /ro /ro && mount -o remount,bind,ro /ro &&
    LANG=T installzet --nodeps --no-colors --root /ro /tmp/b-1.0-noarch-1.tgz'
  expect_status 0
  expect_stdout_line 'MessageInstallingPackage b-1.0-noarch-1'
  [[ "$stderr" == *"zb: Cannot mkdir: Read-only file system"* ]] ||
    sandbox_fail "tar did not fail on the read-only root: $(_quoted "$stderr")"
  expect_missing /ro/zb /ro/var /zb
  expect_g_untouched
}

@test "scripts that fail do not stop the install" {
  mkpkg s-1.0-noarch-1.tgz install/ 'install/slack-desc=s: failing scripts\n' \
    'install/doinst.sh=exit 1\n' 'install/postinst.sh=exit 1\n' zs/ 'zs/s.txt=s\n'
  run_bad 'installzet --nodeps /tmp/s-1.0-noarch-1.tgz' 0
  expect_file_content /zs/s.txt $'s\n'
  expect_exists /var/log/packages/s-1.0-noarch-1 /var/log/scripts/s-1.0-noarch-1
}
