#!/usr/bin/env bats
# The sample package and the tour of examples/: the package lists right, and the tour runs
# as root on a fresh machine, installs, upgrades and removes the package, and leaves the
# machine as it found it.

load lib/sandbox

setup() {
  sandbox_setup
  # The examples run from the sandbox's /tmp, where the tour must leave nothing else.
  cp -R "$ZET_SOURCE_DIR/examples" "$SANDBOX/tmp/examples"
}
teardown() { sandbox_teardown; }

# What the tour could change on the machine: the database, the configuration, the programs
# and the scratch space.
state='find /etc /var /usr/bin /usr/local /lib/zetutils /tmp -xdev ! -path "/tmp/examples*" \
  -printf "%p %y %m %l\n" 2>/dev/null | LC_ALL=C sort'

@test "the sample package lists install/ first and its files without a leading ./" {
  sandbox_run 'cd /tmp && LANG=C /tmp/examples/build-package >/dev/null &&
    tar tvzf zet-hello-1.0-noarch-1.tgz | awk "{ print \$1, \$2, \$NF }" &&
    tar xzOf zet-hello-1.0-noarch-1.tgz install/build &&
    LANG=C /tmp/examples/build-package 24122026 >/dev/null &&
    tar xzOf zet-hello-1.0-noarch-1.tgz install/build && rm zet-hello-1.0-noarch-1.tgz'
  expect_status 0
  expect_stdout 'drwxr-xr-x 0/0 install/
-rw-r--r-- 0/0 install/build
-rw-r--r-- 0/0 install/doinst.sh
-rw-r--r-- 0/0 install/slack-desc
-rw-r--r-- 0/0 install/slack-desc.pl
drwxr-xr-x 0/0 usr/
drwxr-xr-x 0/0 usr/bin/
-rwxr-xr-x 0/0 usr/bin/zet-hello
01112026
24122026
'
}

@test "the tour installs, runs, upgrades and removes zet-hello and leaves the machine as it was" {
  sandbox_run "$state"
  expect_status 0
  local before=$stdout

  sandbox_run '/tmp/examples/demo'
  expect_status 0
  expect_stdout_line 'Hello from zet-hello, a package installed by zet.'
  expect_stdout_line 'Hello from zet-hi, a package installed by zet.'
  expect_stdout_line 'PACKAGE NAME:     zet-hello-1.0-noarch-1'
  expect_stdout_line 'zet-hello: zet-hello (a greeting from the zet examples)'
  expect_stdout_line '01112026'
  expect_stdout_line '02112026'
  expect_stdout_line 'Done.'

  sandbox_run "$state"
  expect_status 0
  expect_equal "the machine after the tour" "$before" "$stdout"
  expect_missing /usr/bin/zet-hello /usr/bin/zet-hi /etc/zet.conf /var/log/packages '/tmp/zet-*'
}

@test "the tour refuses to run over an installed zet-hello and changes nothing" {
  sandbox_run 'printf "PACKAGE NAME:     zet-hello-1.0-noarch-1\n" >/tmp/record &&
    mkdir -p /var/log/packages && mv /tmp/record /var/log/packages/zet-hello-1.0-noarch-1'
  sandbox_run "$state"
  local before=$stdout

  sandbox_run '/tmp/examples/demo'
  expect_status 1
  expect_stderr $'demo: zet-hello is already on this machine; remove it first (removezet zet-hello)\n'
  sandbox_run "$state"
  expect_equal "the machine after the refusal" "$before" "$stdout"
}
