#!/usr/bin/env bats
# Installing, removing, preserving and upgrading packages for real, as root in a sandbox:
# what lands on the disk and in the database under /var/log, what the package scripts see,
# and what the run reports. The output is in the test language "T", which prints each key
# and its arguments.

load lib/sandbox

setup() {
  sandbox_setup
  sandbox_install_test_lang
  make_packages
}
teardown() { sandbox_teardown; }

A=a-1.0-noarch-1
B=b-1.0-noarch-1
P=/var/log/setup/tmp/preserved_packages

# Each script of "a" logs its argument count, its arguments and its working directory.
log_line() { printf 'echo "%s $#:$* in $(pwd)" >>/tmp/scripts.log' "$1"; }
a_doinst="( cd zt/bin ; rm -rf ln )
( cd zt/bin ; ln -sf a-tool ln )
$(log_line doinst)
"
a_postinst="$(log_line postinst)
"
b_doinst=$'( cd zt/bin ; rm -rf ln )\n( cd zt/bin ; ln -sf a-tool ln )\n'

# mkpkg NAME MEMBER...: the package file /tmp/NAME.tgz in the sandbox.
mkpkg() {
  local name=$1
  shift
  "$ZET_SOURCE_DIR/tests/fixtures/mkpkg" "$SANDBOX/tmp/$name.tgz" "$@"
}

# "a" has every control file and depends on "core", whose record stands in the database;
# "b" shares zt/, zt/bin/, zt/shared.txt and the link zt/bin/ln with it. The others are
# later builds: the stamp in install/build is DDMMYYYY.
make_packages() {
  mkpkg $A install/ \
    'install/slack-desc=# ruler\na: first line\nb: not a line of a\na: second line\n' \
    'install/slack-desc.pl=a: pierwsza linia\n' \
    "install/preinst.sh=$(log_line preinst)\n" "install/doinst.sh=$a_doinst" \
    "install/postinst.sh=$a_postinst" 'install/build=15 02\t2020\n' 'install/deps= co re\t\n\n' \
    zt/ zt/bin/ 'zt/bin/a-tool@755=#!/bin/sh\necho a\n' zt/share/ zt/share/a/ \
    'zt/share/a/data@600=data\n' 'zt/shared.txt=shared\n'
  mkpkg $B install/ 'install/slack-desc=b: the b package\n' "install/doinst.sh=$b_doinst" \
    zt/ zt/b.txt=b zt/bin/ 'zt/shared.txt=shared\n'
  local stamp
  for stamp in a-1.1-noarch-1:01032020 a-1.0-noarch-2:15022020 a-0.9-noarch-1:31012020; do
    mkpkg "${stamp%:*}" install/ "install/slack-desc=a: build ${stamp#*:}\n" \
      "install/build=${stamp#*:}\n" 'install/deps=core\n' zt/ zt/bin/ \
      'zt/bin/a-tool@755=#!/bin/sh\necho new\n'
  done
  mkpkg b-1.1-noarch-1 install/ 'install/slack-desc=b: version 1.1\n' \
    'install/build=01032020\n' zt/ zt/b.txt=new
  printf 'PACKAGE NAME:     core-1.0-noarch-1\n' | sandbox_write /var/log/packages/core-1.0-noarch-1
}

# zet PROGRAM WORD...: runs the program in the test language, without colours.
zet() { sandbox_run "LANG=T $1 --no-colors ${*:2}"; }

# Installing over directories that exist makes tar complain on its own standard error, which
# the program leaves alone; nothing else may stand there.
expect_stderr_only_tar() {
  local line
  while IFS= read -r line; do
    [[ "$line" == /lib/zetutils/tar:* ]] ||
      sandbox_fail "stderr has a line that is not tar's: $(_quoted "$line")" "$(_context)" || return 1
  done <"$SB_STDERR"
}

# installed A...: installs the packages of those names from /tmp, one run each.
installed() {
  local name
  for name in "$@"; do
    zet installzet --nodeps /tmp/$name.tgz
    expect_status 0 || return 1
  done
}

expect_stdout_begins() {
  [[ "$stdout" == "$1"* ]] ||
    sandbox_fail "stdout does not begin with $(_quoted "$1")" "$(_context)"
}

# The size in K that gzip -l gives in column COLUMN (1 or 2) for the package file NAME.
size_k() {
  local bytes
  bytes=$(gzip -l "$SANDBOX/tmp/$1.tgz" | awk -v c="$2" 'NR == 2 { print $c }')
  echo $(((bytes + 1023) / 1024))
}

a_files=$'zt/\nzt/bin/\nzt/bin/a-tool\nzt/share/\nzt/share/a/\nzt/share/a/data\nzt/shared.txt\n'
a_installing=$'MessageInstallingPackage a-1.0-noarch-1\nMessagePackageDescription\na: first line\na: second line\n\n'
a_removed_alone=$'MessageRemovingPackage a-1.0-noarch-1
MessageDeletingSymlink //zt/bin/ln
MessageDeletingFile //zt/shared.txt
MessageDeletingFile //zt/share/a/data
MessageDeletingEmptyDirectory //zt/share/a/
MessageDeletingEmptyDirectory //zt/share/
MessageDeletingFile //zt/bin/a-tool
MessageDeletingEmptyDirectory //zt/bin/
MessageDeletingEmptyDirectory //zt/
'
a_would_delete="MessageRemovingPackage $A
MessageSymlinkWouldBeDeleted zt/bin/ln
$(sed 's/^/MessageFileWouldBeDeleted /' <<<"${a_files%$'\n'}")
"
a_database=(/var/log/packages/$A /var/log/scripts/$A /var/log/postinst/$A /var/log/build/$A
  /var/log/deps/$A)

# expect_a_installed ROOT: everything of "a" is under ROOT ("" for "/"), byte for byte.
expect_a_installed() {
  local r=$1
  sandbox_run "cd '$r/' && stat -c '%a %n' zt/bin/a-tool zt/share/a/data && readlink zt/bin/ln"
  expect_stdout $'755 zt/bin/a-tool\n600 zt/share/a/data\na-tool\n'
  expect_file_content "$r/zt/bin/a-tool" $'#!/bin/sh\necho a\n'
  expect_file_content "$r/var/log/packages/$A" "PACKAGE NAME:     $A
COMPRESSED PACKAGE SIZE:     $(size_k $A 1) K
UNCOMPRESSED PACKAGE SIZE:     $(size_k $A 2) K
PACKAGE LOCATION:     $A.tgz
PACKAGE DESCRIPTION:
a: first line
a: second line
LANGUAGE:     pl
a: pierwsza linia
FILE LIST:
$a_files"
  expect_file_content "$r/var/log/scripts/$A" "$a_doinst"
  expect_file_content "$r/var/log/postinst/$A" "$a_postinst"
  expect_file_content "$r/var/log/build/$A" $'15022020\n'
  expect_file_content "$r/var/log/deps/$A" $'core\n'
  expect_file_content /tmp/scripts.log "preinst 0: in ${r:-/}
doinst 1:-install in ${r:-/}
postinst 1:--afterinstall in ${r:-/}
"
  expect_missing "$r/install"
}

@test "installing onto / unpacks the files, writes the database and runs the scripts in the root" {
  zet installzet /tmp/$A.tgz
  expect_status 0
  expect_stdout "$a_installing"
  expect_stderr ''
  expect_a_installed ''

  # No preinst, postinst, build or deps: nothing of them in the database.
  zet installzet /tmp/$B.tgz
  expect_status 0
  expect_stdout $'MessageInstallingPackage b-1.0-noarch-1\nMessagePackageDescription\nb: the b package\n\n'
  expect_file_content /var/log/scripts/$B "$b_doinst"
  expect_exists /var/log/packages/$B /zt/b.txt
  expect_missing /var/log/postinst/$B /var/log/build/$B /var/log/deps/$B
}

@test "installing under --root puts files and database under it and runs the scripts there" {
  zet installzet --nodeps --root /mnt/r /tmp/$A.tgz
  expect_status 0
  expect_stdout "$a_installing"
  expect_a_installed /mnt/r
  expect_missing /zt /var/log/packages/$A
}

@test "removing a package alone deletes its link, files, directories deepest first and database" {
  installed $A
  sandbox_run 'rm /tmp/scripts.log'
  zet removezet a
  expect_status 0
  expect_stdout "$a_removed_alone"
  expect_stderr ''
  expect_file_content /tmp/scripts.log $'postinst 1:--beforeremove in /\n'
  expect_missing /zt "${a_database[@]}"
}

@test "a file, directory or link that another package names stays until that package goes" {
  installed $A $B
  zet removezet a
  expect_status 0
  expect_stdout "MessageRemovingPackage $A
MessageSymlinkFoundInAnotherPackage //zt/bin/ln
MessageFileFoundInAnotherPackage //zt/shared.txt
MessageDeletingFile //zt/share/a/data
MessageDeletingEmptyDirectory //zt/share/a/
MessageDeletingEmptyDirectory //zt/share/
MessageDeletingFile //zt/bin/a-tool
MessageFileFoundInAnotherPackage //zt/bin/
MessageFileFoundInAnotherPackage //zt/
"
  expect_exists /zt/bin/ln /zt/shared.txt

  zet removezet b
  expect_status 0
  expect_stdout "MessageRemovingPackage $B
MessageDeletingSymlink //zt/bin/ln
MessageDeletingFile //zt/shared.txt
MessageDeletingEmptyDirectory //zt/bin/
MessageDeletingFile //zt/b.txt
MessageDeletingEmptyDirectory //zt/
"
  expect_missing /zt /var/log/packages/$B /var/log/scripts/$B
}

@test "a directory that holds a file of no package stays, with a warning" {
  installed $A
  sandbox_run 'echo mine >/zt/share/a/mine'
  zet removezet a
  expect_status 0
  expect_stdout "MessageRemovingPackage $A
MessageDeletingSymlink //zt/bin/ln
MessageDeletingFile //zt/shared.txt
MessageDeletingFile //zt/share/a/data
MessageDeletingFile //zt/bin/a-tool
MessageDeletingEmptyDirectory //zt/bin/
"
  expect_stderr 'WARNING: WarningDirectoryContainsNewFiles //zt/share/a/
WARNING: WarningDirectoryContainsNewFiles //zt/share/
WARNING: WarningDirectoryContainsNewFiles //zt/
'
  expect_file_content /zt/share/a/mine $'mine\n'
}

@test "--warn changes nothing and lists what would be deleted, linked or overwritten" {
  installed $A
  sandbox_run 'rm /tmp/scripts.log'
  zet removezet --warn a
  expect_status 0
  expect_stdout "$a_would_delete"
  expect_exists /zt/bin/ln /zt/shared.txt "${a_database[@]}"
  expect_missing /tmp/scripts.log

  zet installzet --warn /tmp/$B.tgz
  expect_status 0
  expect_stdout $'MessageShowWarnDirs\n//zt/bin/ln\nMessageShowWarnOverwrite\n//zt/shared.txt\n'
  expect_missing /zt/b.txt /var/log/packages/$B /var/log/scripts/$B
}

@test "--preserve keeps a copy of each package and removes it; --copy keeps the package installed" {
  installed $A $B
  zet removezet --preserve a b
  expect_status 0
  expect_stdout_begins "MessagePreserve $P/$A"$'\n'"MessageRemovingPackage $A"$'\n'
  expect_stdout_line "MessagePreserve $P/$B"
  expect_missing /zt /var/log/packages/$A /var/log/packages/$B "$P/$A/zt/bin/ln"
  sandbox_run "cd $P/$A && stat -c '%a %n' zt/bin/a-tool zt/share/a/data"
  expect_stdout $'755 zt/bin/a-tool\n600 zt/share/a/data\n'
  expect_file_content "$P/$A/zt/shared.txt" $'shared\n'
  expect_file_content "$P/$A/install/doinst.sh" "$a_doinst"
  expect_file_content "$P/$A/install/postinst.sh" "$a_postinst"
  expect_file_content "$P/$A/install/build" $'15022020\n'
  expect_file_content "$P/$B/zt/b.txt" b
  expect_file_content "$P/$B/install/doinst.sh" "$b_doinst"
  expect_file_content "$P/$B/install/postinst.sh" ''
  expect_file_content "$P/$B/install/build" ''

  installed $A
  zet removezet --copy a
  expect_status 0
  expect_stdout "MessagePreserve $P/$A"$'\n'"$a_would_delete"
  expect_exists /zt/bin/ln "${a_database[@]}" "$P/$A/zt/share/a/data"
}

@test "an upgrade to a later build installs, removes the old package, and installs again" {
  installed $A
  zet upgradezet /tmp/a-1.1-noarch-1.tgz
  expect_status 0
  expect_stdout 'MessageUpgrading a /tmp/a-1.1-noarch-1.tgz
MessagePreinstallingPackage a-1.1-noarch-1
MessageDeletingSymlink //zt/bin/ln
MessageDeletingFile //zt/shared.txt
MessageDeletingFile //zt/share/a/data
MessageDeletingEmptyDirectory //zt/share/a/
MessageDeletingEmptyDirectory //zt/share/
MessageFileFoundInAnotherPackage //zt/bin/a-tool
MessageFileFoundInAnotherPackage //zt/bin/
MessageFileFoundInAnotherPackage //zt/
MessagePackageDescription
a: build 01032020

MessagePackageUpgraded a /tmp/a-1.1-noarch-1.tgz
'
  expect_stderr_only_tar
  sandbox_run 'ls /var/log/packages; ls /var/log/build'
  expect_stdout $'a-1.1-noarch-1\ncore-1.0-noarch-1\na-1.1-noarch-1\n'
  expect_file_content /zt/bin/a-tool $'#!/bin/sh\necho new\n'
  expect_missing /zt/shared.txt /var/log/scripts/$A /var/log/postinst/$A
}

@test "an upgrade to an equal or earlier build is refused; --reinstall accepts an equal one" {
  installed $A
  local words
  for words in /tmp/a-1.0-noarch-2.tgz /tmp/a-0.9-noarch-1.tgz '--reinstall /tmp/a-0.9-noarch-1.tgz'; do
    zet upgradezet $words
    expect_status 255
    expect_stdout ''
    expect_stderr $'ERROR: ErrorPackageMustBeNewer a\n'
    expect_exists "${a_database[@]}" /zt/shared.txt
  done

  zet upgradezet --reinstall /tmp/a-1.0-noarch-2.tgz
  expect_status 0
  expect_stdout_line 'MessagePackageUpgraded a /tmp/a-1.0-noarch-2.tgz'
  expect_file_content /var/log/build/a-1.0-noarch-2 $'15022020\n'
  expect_missing "${a_database[@]}"
}

@test "a refused upgrade leaves the ones before it done; --install-new installs a new package" {
  installed $A $B
  # b has no build stamp, so nothing is compared for it.
  zet upgradezet /tmp/b-1.1-noarch-1.tgz /tmp/a-0.9-noarch-1.tgz
  expect_status 255
  expect_stderr_line 'ERROR: ErrorPackageMustBeNewer a'
  expect_stdout_line 'MessagePackageUpgraded b /tmp/b-1.1-noarch-1.tgz'
  expect_exists /var/log/packages/b-1.1-noarch-1 /var/log/packages/$A
  expect_missing /var/log/packages/$B

  zet removezet b
  zet upgradezet --install-new /tmp/b-1.1-noarch-1.tgz
  expect_status 0
  expect_stdout $'MessageUpgrading  /tmp/b-1.1-noarch-1.tgz\nMessagePackageDescription\nb: version 1.1\n\nMessagePackageUpgraded  /tmp/b-1.1-noarch-1.tgz\n'
  expect_file_content /zt/b.txt new
}

@test "tags: the tag file drops a skipped package; --priority SKP skips all, ADD installs" {
  printf 'a: SKP\n' | sandbox_write /srv/tags
  zet installzet --tagfile /srv/tags /tmp/$A.tgz /tmp/$B.tgz
  expect_status 0
  expect_stdout $'MessageInstallingPackage b-1.0-noarch-1\nMessagePackageDescription\nb: the b package\n\n'
  expect_missing /var/log/packages/$A

  zet removezet b
  zet installzet --priority SKP /tmp/$A.tgz /tmp/$B.tgz
  expect_status 0
  expect_stdout ''
  expect_stderr ''
  expect_missing /zt /var/log/packages/$A /var/log/packages/$B

  zet installzet --priority ADD /tmp/$A.tgz
  expect_status 0
  expect_stdout "$a_installing"
  expect_exists "${a_database[@]}"
}
