#!/usr/bin/env bash
# Installs a build into a fresh folder and uses what lies there, as a user and as an author of C programs would.
#   install_test.sh CMAKE BUILD_FOLDER C_COMPILER VERSION
set -euo pipefail

cmake=$1 build=$2 compiler=$3 version=$4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# Moved after the installation, so that nothing can lean on the path it was installed to, or on the build folder.
"$cmake" --install "$build" --prefix "$folder/made" >"$folder/install.log" 2>&1 || {
  cat "$folder/install.log"
  exit 1
}
mv "$folder/made" "$folder/kelvo"
prefix=$folder/kelvo
program=$prefix/bin/kelvocli
unset LD_LIBRARY_PATH

fail() {
  echo "FAILED: $*"
  exit 1
}

expect_equal() { # what, expected, actual
  [[ $2 == "$3" ]] || fail "$1: expected \"$2\", got \"$3\""
}

expect_file() { [[ -s $prefix/$1 ]] || fail "$1 is not installed"; }

program_starts_from_its_new_place() {
  expect_equal "version" "$version" "$("$program" --version)"
  [[ $(ldd "$program") == *"libKelvo.so => $prefix/"* ]] ||
    fail "the program does not find the installed engine"
}

engine_answers() {
  local answer
  answer=$("$program" --no-status --execute="SHOW HDF5 VERSION") || fail "SHOW HDF5 VERSION: $answer"
  [[ $answer =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "SHOW HDF5 VERSION answered \"$answer\""
}

help_lists_the_options() {
  options=$("$program" --help | grep -o -- '--[a-z-]*' | sort) || fail "--help lists nothing"
  [[ $options == *--execute-file* ]] || fail "--help lists only $options"
}

# An empty entry would be the current directory: a library lying there would be loaded.
run_path_is_relative() {
  local dynamic path
  dynamic=$(readelf --dynamic --wide "$program")
  [[ $dynamic != *"(RPATH)"* ]] || fail "an RPATH would win over LD_LIBRARY_PATH"
  path=$(sed -n 's/.*(RUNPATH).*\[\(.*\)\]$/\1/p' <<<"$dynamic")
  [[ $path =~ ^\$ORIGIN/[^:]+(:\$ORIGIN/[^:]+)*$ ]] || fail "RUNPATH is \"$path\""
}

files_are_in_place() {
  expect_file bin/kelvocli
  expect_file include/kelvo.h
  expect_file share/man/man1/kelvocli.1
  expect_file share/bash-completion/completions/kelvocli
  engine_folder=$(dirname "$(find "$prefix" -name libKelvo.so)")
  expect_file "${engine_folder#"$prefix"/}/pkgconfig/kelvo.pc"
}

c_program_compiles_and_links() {
  export PKG_CONFIG_PATH=$engine_folder/pkgconfig
  expect_equal "pkg-config's version" "$version" "$(pkg-config --modversion kelvo)"
  cat >"$folder/client.c" <<'C'
#include <kelvo.h>
#include <stdio.h>

int main(void) {
  char statement[] = "SHOW KELVO VERSION";
  if (kelvo_execute(statement) != KELVO_SUCCESS) return 1;
  if (kelvo_cursor_next(NULL) != 0) return 2;
  printf("%s\n", kelvo_cursor_get_char(NULL));
  return 0;
}
C
  local -a flags libraries
  read -ra flags < <(pkg-config --cflags kelvo)
  read -ra libraries < <(pkg-config --libs kelvo)
  "$compiler" -Wall -Wextra -Werror "${flags[@]}" -o "$folder/client" "$folder/client.c" "${libraries[@]}"
  expect_equal "the C program's answer" "$version" "$(LD_LIBRARY_PATH=$engine_folder "$folder/client")"
}

# The commands of the page for authors of engines, as they stand there.
another_engine_takes_the_place() {
  local documents
  documents=$(cd "$(dirname "${BASH_SOURCE[0]}")/../docs" && pwd)
  mkdir "$folder/engine"
  cp "$documents/engines/counting_engine.c" "$folder/engine"
  awk '/^```/ { inside = $0 == "```sh"; if (seen++) exit; next } inside' "$documents/engines.md" >"$folder/engine/commands"
  expect_equal "another engine's answers" "$(printf '%s\n' 1 2 3 "1 2 3 4" "it in any words" \
    'Expected a number, found "many" (line 1 at position 6 - status -1).')" \
    "$(cd "$folder/engine" && PATH=$prefix/bin:$PATH bash ./commands)"
  expect_equal "another engine's functions" "$(exported_functions "$engine_folder/libKelvo.so")" \
    "$(exported_functions "$folder/engine/libKelvo.so")"
}

exported_functions() { nm --dynamic --defined-only "$1" | awk '{ print $3 }' | sort; }

# Completes the words as bash would; outside of bash's own completion compopt fails, which changes nothing.
complete_words() {
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _kelvocli "$program" || true
}

completion_offers_every_option() {
  # shellcheck source=kelvocli.bash
  source "$prefix/share/bash-completion/completions/kelvocli"
  complete_words kelvocli --
  expect_equal "completion of --" "$options" "$(printf '%s\n' "${COMPREPLY[@]%=}" | sort)"
}

completion_finds_the_named_file() {
  cd "$prefix"
  complete_words kelvocli --execute-file "=" shar
  expect_equal "completion of a file" "share" "${COMPREPLY[*]}"
}

manual_page_tells_every_option() {
  local page option
  page=$(sed 's/\\//g' "$prefix/share/man/man1/kelvocli.1")
  for option in $options; do
    [[ $page == *"$option"* ]] || fail "the manual page lacks $option"
  done
}

files_are_in_place
program_starts_from_its_new_place
engine_answers
run_path_is_relative
c_program_compiles_and_links
another_engine_takes_the_place
help_lists_the_options
completion_offers_every_option
completion_finds_the_named_file
manual_page_tells_every_option
echo "All of the installation is in place and works"
