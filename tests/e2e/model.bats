#!/usr/bin/env bats
# A randomized model test of installing and removing. A dozen packages share directories,
# files and the links of their doinst scripts; one sandbox then takes a long random walk of
# single installs and removals. The model is the set of installed packages, and after every
# step the machine must match it: each file of an installed package is there with its
# content, each of its links is a link to its target, each of its directories is a
# directory; whatever only packages that are no longer installed listed is gone, the empty
# directories among it included; and the database holds a record for exactly the installed
# packages. Nothing that an installed package owns may ever be lost.
#
# The walk is seeded: ZET_MODEL_SEED picks another walk (the default is fixed, so that
# every run of the suite takes the same one), ZET_MODEL_STEPS its length. A failure names
# the seed, the step, the command and each path that is wrong.

load lib/sandbox

setup() { sandbox_setup; }
teardown() { sandbox_teardown; }

# --- The packages -----------------------------------------------------------------------
# Each package holds the files and links given here, and lists every directory above them,
# each before what lies in it, as real packages do. A file listed by several packages has
# the same content in each; a link named by several doinst scripts has the same target.

data=usr/share/zmodel
libs=usr/lib/zmodel

# The content of every file, by path, with the escapes of mkpkg.
declare -gA content=(
  [$data/common/readme]='read me, from ant, bee and cat'
  [$data/pair/data]='data of dog and eel'
  [$data/trio/conf]='conf=fox,gnu,hen'
  [$data/shared/eel]='eel in a shared directory'
  [$data/shared/jay]='jay in a shared directory'
  [$data/deep/a/gnu]='gnu, deep'
  [$data/deep/a/b/ibis]='ibis, deeper'
  [$data/deep/a/b/c/kiwi]='kiwi, deepest'
  [$libs/libx.so.1]='libx of ant, dog and ibis'
  [$libs/liby.so.2]='liby of bee and jay'
  [$libs/libz.so.1]='libz of cat, kiwi and lark'
  [$libs/libhen.so.0]='libhen of hen alone'
)

# The links, by path: the target, relative to the link's directory.
declare -gA link_target=(
  [$libs/libx.so]=libx.so.1
  [$libs/liby.so]=liby.so.2
  [$libs/libz.so]=libz.so.1
  [$libs/libhen.so]=libhen.so.0
)

names=(ant bee cat dog eel fox gnu hen ibis jay kiwi lark)

# What each package holds besides its own files: shared files, and links as "@path".
declare -gA holds=(
  [ant]="$data/common/readme $libs/libx.so.1 @$libs/libx.so"
  [bee]="$data/common/readme $libs/liby.so.2 @$libs/liby.so"
  [cat]="$data/common/readme $libs/libz.so.1 @$libs/libz.so"
  [dog]="$data/pair/data $libs/libx.so.1 @$libs/libx.so"
  [eel]="$data/pair/data $data/shared/eel"
  [fox]="$data/trio/conf"
  [gnu]="$data/trio/conf $data/deep/a/gnu"
  [hen]="$data/trio/conf $libs/libhen.so.0 @$libs/libhen.so"
  [ibis]="$libs/libx.so.1 @$libs/libx.so $data/deep/a/b/ibis"
  [jay]="$libs/liby.so.2 @$libs/liby.so $data/shared/jay"
  [kiwi]="$libs/libz.so.1 @$libs/libz.so $data/deep/a/b/c/kiwi"
  [lark]="$libs/libz.so.1 @$libs/libz.so"
)

# Directories of the machine itself, which stay whatever is removed.
host_dirs=(usr/ usr/share/ usr/lib/)

full_name() { echo "$1-1.0-noarch-1"; }

# Fills, for every package, its own files and then the tables of the walk:
#   members[p]    the members of its package file, one a line, in order
#   owners[path]  the packages that list a file or directory ("dir/" for a directory)
#   namers[path]  the packages whose doinst script names a link
#   executable[path]  set for a file of mode 755
#   has_script[p] set for a package with a doinst script
declare -gA members owners namers executable has_script
define_packages() {
  local p item path dir prefix listed doinst tool
  for p in "${names[@]}"; do
    tool="$data/$p/bin/$p"
    content[$tool]="#!/bin/sh\\necho $p"
    executable[$tool]=1
    content[$data/$p/doc/notes]="notes of $p"
    listed=" "
    doinst=
    members[$p]=
    for item in ${holds[$p]} "$tool" "$data/$p/doc/notes"; do
      if [[ "$item" == @* ]]; then
        path=${item#@}
        namers[$path]+=" $p"
        has_script[$p]=1
        dir=${path%/*}
        doinst+="( cd $dir ; rm -rf ${path##*/} )\\n( cd $dir ; ln -sf ${link_target[$path]} ${path##*/} )\\n"
        continue
      fi
      # The directories above the file, from the top down, each listed once.
      prefix=
      dir=${item%/*}/
      while [[ -n "$dir" ]]; do
        prefix+=${dir%%/*}/
        dir=${dir#*/}
        [[ "$listed" == *" $prefix "* ]] && continue
        listed+="$prefix "
        members[$p]+=$prefix$'\n'
        owners[$prefix]+=" $p"
      done
      owners[$item]+=" $p"
      if [[ -n "${executable[$item]:-}" ]]; then
        members[$p]+="$item@755=${content[$item]}"$'\n'
      else
        members[$p]+="$item=${content[$item]}"$'\n'
      fi
    done
    members[$p]="install/"$'\n'"install/slack-desc=$p: model package $p\\n"$'\n'${doinst:+"install/doinst.sh=$doinst"$'\n'}${members[$p]}
  done
}

build_packages() {
  local p words path
  mkdir -p "$SANDBOX/tmp/pkgs" "$SANDBOX/tmp/model/content"
  for p in "${names[@]}"; do
    mapfile -t words <<<"${members[$p]%$'\n'}"
    "$ZET_SOURCE_DIR/tests/fixtures/mkpkg" "$SANDBOX/tmp/pkgs/$(full_name "$p").tgz" "${words[@]}"
  done
  # The expected contents, which the checks inside the sandbox compare against.
  for path in "${!content[@]}"; do
    mkdir -p "$SANDBOX/tmp/model/content/${path%/*}"
    printf '%b' "${content[$path]}" >"$SANDBOX/tmp/model/content/$path"
  done
}

# --- The checks -------------------------------------------------------------------------
# One script, written once, checks the whole machine against a model: it takes the short
# names of the installed packages as its arguments and prints each path that is wrong, and
# what is wrong with it. It runs inside the sandbox, right after the step's command.

check_head='
file_record() { [ -f "/$1" ] || bad "$1" "expected a record, is $(what "$1")"; }
installed=" $* "
failed=0
bad() { echo "$1: $2"; failed=1; }
present() { [ -e "/$1" ] || [ -L "/$1" ]; }
what() {
  if [ -L "/$1" ]; then echo "a link to $(readlink "/$1")"
  elif [ -d "/$1" ]; then echo "a directory holding: $(ls -A "/$1" | tr "\n" " ")"
  elif [ -f "/$1" ]; then echo "a file"
  elif present "$1"; then echo "something else"
  else echo "missing"; fi
}
# owned OWNER...: whether one of them is installed.
owned() {
  for o in "$@"; do
    case "$installed" in *" $o "*) return 0 ;; esac
  done
  return 1
}
gone() { if present "$1"; then bad "$1" "expected to be gone, is $(what "$1")"; fi; }
dir() { { [ -d "/$1" ] && [ ! -L "/$1" ]; } || bad "$1" "expected a directory, is $(what "$1")"; }
file() {
  if [ -L "/$1" ] || [ ! -f "/$1" ]; then bad "$1" "expected a file, is $(what "$1")"
  elif ! cmp -s "/tmp/model/content/$1" "/$1"; then bad "$1" "content differs: $(cat "/$1")"
  elif [ "$2" = x ] && [ ! -x "/$1" ]; then bad "$1" "expected to be executable"; fi
}
link() {
  if [ ! -L "/$1" ]; then bad "$1" "expected a link to $2, is $(what "$1")"
  elif [ "$(readlink "/$1")" != "$2" ]; then bad "$1" "expected a link to $2, points to $(readlink "/$1")"; fi
}
# Each line: KIND PATH EXTRA OWNER..., where a host directory has no owners and stays.
while read -r kind path extra owners; do
  case $kind in
    host) dir "$path" ;;
    dir) if owned $owners; then dir "$path"; else gone "$path"; fi ;;
    file) if owned $owners; then file "$path" "$extra"; else gone "$path"; fi ;;
    link) if owned $owners; then link "$path" "$extra"; else gone "$path"; fi ;;
    record) if owned $owners; then file_record "$path"; else gone "$path"; fi ;;
  esac
done <<EOF'

check_tail='EOF
gone install
for t in /tmp/zet-*; do
  if [ -e "$t" ]; then bad "$t" "the scratch directory is left behind"; fi
done
exit $failed'

write_check() {
  local path p kind extra
  {
    printf '%s\n' "$check_head"
    for path in "${host_dirs[@]}"; do echo "host $path -"; done
    for path in "${!owners[@]}"; do
      [[ " ${host_dirs[*]} " == *" $path "* ]] && continue
      kind=file
      [[ "$path" == */ ]] && kind=dir
      extra=-
      [[ -n "${executable[$path]:-}" ]] && extra=x
      echo "$kind $path $extra${owners[$path]}"
    done
    for path in "${!namers[@]}"; do
      echo "link $path ${link_target[$path]}${namers[$path]}"
    done
    for p in "${names[@]}"; do
      echo "record var/log/packages/$(full_name "$p") - $p"
      echo "record var/log/scripts/$(full_name "$p") - ${has_script[$p]:+$p}"
    done
    printf '%s\n' "$check_tail"
  } >"$SANDBOX/tmp/model/check"
}

# --- The walk ---------------------------------------------------------------------------

# A generator of its own, so that a seed gives the same walk with every shell.
rng_next() {
  rng_state=$(( (rng_state * 1103515245 + 12345) % 2147483648 ))
  pick=$(( (rng_state >> 16) % $1 ))
}

declare -gA installed
history=()

# step COMMAND: runs one step and, in the same run of the sandbox, checks the machine
# against the model, which the caller has already brought up to date.
step() {
  local cmd=$1
  history+=("$cmd")
  sandbox_run "LANG=C $cmd --no-colors >/tmp/model/stdout 2>/tmp/model/stderr
    echo \$? >/tmp/model/status
    sh /tmp/model/check$installed_list"
  local cmd_status
  cmd_status=$(cat "$SANDBOX/tmp/model/status")
  if [[ "$cmd_status" != 0 ]]; then
    model_fail "the command ended with status $cmd_status" "$(command_output)"
    return 1
  fi
  if [[ "$status" != 0 ]]; then
    model_fail "the machine does not match the model (installed:${installed_list:- nothing}):" \
      "$(sed 's/^/  /' "$SB_STDOUT")" "  stderr of the check: $stderr" "$(command_output)"
    return 1
  fi
}

command_output() {
  echo "  the command's stdout: $(_quoted_file "$SANDBOX/tmp/model/stdout")"
  echo "  the command's stderr: $(_quoted_file "$SANDBOX/tmp/model/stderr")"
}

model_fail() {
  sandbox_fail "model seed $seed, step ${#history[@]}: ${history[-1]}" "$@" \
    "steps so far (rerun with ZET_MODEL_SEED=$seed):" "$(printf '  %s\n' "${history[@]}")"
}

toggle() {
  local p=$1 full
  full=$(full_name "$p")
  if [[ -n "${installed[$p]:-}" ]]; then
    unset "installed[$p]"
    update_list
    step "removezet --nodeps $p"
  else
    installed[$p]=1
    update_list
    step "installzet --nodeps /tmp/pkgs/$full.tgz"
  fi
}

update_list() {
  local p
  installed_list=
  for p in "${names[@]}"; do
    [[ -n "${installed[$p]:-}" ]] && installed_list+=" $p"
  done
  return 0
}

@test "a random walk of installs and removals keeps exactly what the installed packages own" {
  seed=${ZET_MODEL_SEED:-20261122}
  local steps=${ZET_MODEL_STEPS:-60}
  [[ "$seed" =~ ^[0-9]+$ && "$steps" =~ ^[0-9]+$ ]] ||
    sandbox_fail "ZET_MODEL_SEED and ZET_MODEL_STEPS are whole numbers" || return 1
  echo "# model seed $seed, $steps steps" >&3
  rng_state=$(( seed % 2147483648 ))

  define_packages
  build_packages
  write_check

  local n p
  for ((n = 0; n < steps; n++)); do
    rng_next ${#names[@]}
    toggle "${names[$pick]}" || return 1
  done

  # Then every package still installed goes, in a random order, and nothing is left.
  while [[ -n "${installed_list:-}" ]]; do
    local left=($installed_list)
    rng_next ${#left[@]}
    toggle "${left[$pick]}" || return 1
  done
  sandbox_run 'ls -A /var/log/packages; ls -d /usr/share/zmodel /usr/lib/zmodel 2>/dev/null'
  expect_stdout ''
}
