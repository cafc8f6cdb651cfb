#!/usr/bin/env bash
# What the built module must and must not contain:
#   check_module.sh documented NAMES MEMBERS           every documented member is in the list of exported names
#   check_module.sh called NAMES CLIENT...             the clients together import every public and protected member
#   check_module.sh imports MODULE                     nothing beyond the kernel library and the C and C++ run-times
#   check_module.sh no_fused MODULE                    no fused multiply-add
#   check_module.sh no_paths MODULE PDB SOURCES        no path below the sources in the module and its debug information
#   check_module.sh debug_run_time SOURCES BUILD       callers with the debug run-time are refused, with the reason
#   check_module.sh kernels LIST                       kernel objects define their own namespace only
#   check_module.sh baseline LIST                      the other objects use no wide registers
#   check_module.sh no_initialisers LIST               no object has start-up code
#   check_module.sh deleting_destructors LIST          virtual tables hold the vector deleting destructor only
# LIST is a file with one object a line.
set -euo pipefail
tool() { command -v "$1-${LLVM_VERSION:-22}" || command -v "$1"; }
fail() { echo "$*"; exit 1; }
# none_of FILE COMMAND... "|" PATTERN...: fails when grep finds something in what the command prints. All of it is read:
# a grep that stops at the first lines ends the command with an error, which would pass for nothing found.
none_of() {
  local file=$1 found command=()
  shift
  while [ "$1" != "|" ]; do command+=("$1"); shift; done
  shift
  found=$("${command[@]}" | { grep "$@" || true; })
  [ -z "$found" ] || fail "in $file:"$'\n'"$(head -5 <<<"$found")"
}
what=$1 first=$2
shift 2

imports_of() {
  "$(tool llvm-readobj)" --coff-imports "$1" | tr -d '\r'
}

case $what in
  documented)
    missing=$(LC_ALL=C comm -13 <(cut -d' ' -f2- "$first" | LC_ALL=C sort) <(LC_ALL=C sort "$1"))
    [ -z "$missing" ] || fail "not exported:"$'\n'"$missing"
    echo "$(wc -l <"$1") documented members are exported" ;;
  called)
    wanted=$(grep -vE ' private: |vftable' "$first" | LC_ALL=C sort)
    [ "$(wc -l <<<"$wanted")" -gt 300 ] || fail "the list of names is too short"
    called=$(for client; do imports_of "$client"; done | awk '$1 == "Symbol:" {print $2}' | LC_ALL=C sort -u)
    missing=$(LC_ALL=C join -v1 <(echo "$wanted") <(echo "$called"))
    [ -z "$missing" ] || fail "called by no client:"$'\n'"$missing"
    echo "$(wc -l <<<"$wanted") members are called" ;;
  imports)
    libraries=$(imports_of "$first" | awk '$1 == "Name:" {print $2}')
    [ -n "$libraries" ] || fail "no imports found"
    echo "$libraries"
    ! grep -vE '^(KERNEL32\.dll|VCRUNTIME140\.dll|api-ms-win-crt-[a-z]+-l1-1-0\.dll)$' <<<"$libraries" || fail "not allowed" ;;
  no_paths)
    grep -aqF tessarn.natvis "$1" || fail "$1 is no debug information"
    for file in "$first" "$1"; do
      for encoding in s l; do
        none_of "$file" strings -a "-e$encoding" "$file" "|" -F -e "$2" -e "${2//\//\\}"
      done
    done
    echo "no path below $2" ;;
  debug_run_time)
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    # The compiler and its options, as the clients of this build have them.
    compile=$(grep -m1 -E '^  FLAGS = ' <(grep -A8 'build tests/windows/CMakeFiles/cplx_client.dir' "$1/build.ninja") | sed 's/^  FLAGS = //; s/ -MD / /')
    echo '#include <tessarn/tessarn.h>' >"$work/caller.cpp"
    caller() { eval "$(tool clang-cl) --target=x86_64-pc-windows-msvc $compile -I$first/include /c /Fo$work/$1.obj $work/caller.cpp ${*:2}" 2>&1; }
    refusal=$(caller module /MDd) && fail "compiled with the debug run-time for the Release module"
    grep -F "/MDd with the Release module of Tessarn" <<<"$refusal" || fail "no reason given: $refusal"
    caller module /MD || fail "refused with /MD"
    caller module /MDd -DTESSARN_DEBUG_MODULE || fail "refused with the Debug module"
    # The static library's objects tell the linker which run-time they are for.
    caller release /MD -DTESSARN_STATIC
    caller debug /MDd -DTESSARN_STATIC
    refusal=$("$(tool lld-link)" /dll /noentry /nodefaultlib /force:unresolved "/out:$work/x.dll" "$work/release.obj" "$work/debug.obj" 2>&1) &&
      fail "linked with two run-times"
    grep -F "mismatch detected for 'tessarn: run-time library'" <<<"$refusal" || fail "no reason given: $refusal"
    # The package refuses a Debug build that takes the debug run-time.
    cmake --install "$1" --prefix "$work/prefix" >/dev/null
    printf 'cmake_minimum_required(VERSION 3.22)\nproject(caller LANGUAGES NONE)\nfind_package(tessarn REQUIRED)\n' >"$work/CMakeLists.txt"
    configured() { cmake -S "$work" -B "$work/$1" -DCMAKE_BUILD_TYPE="$1" -Dtessarn_DIR="$work/prefix/lib/cmake/tessarn" "${@:2}" 2>&1; }
    refusal=$(configured Debug) && fail "a Debug build took the Release module"
    tr -s '\n ' ' ' <<<"$refusal" | grep -o 'this package of tessarn holds the Release module alone' || fail "no reason given: $refusal"
    configured Debug -DCMAKE_MSVC_RUNTIME_LIBRARY=MultiThreadedDLL >"$work/log" || fail "refused with /MD: $(cat "$work/log")"
    configured Release >"$work/log" || fail "refused in Release: $(cat "$work/log")" ;;
  no_fused)
    listing=$("$(tool llvm-objdump)" -d --no-show-raw-insn "$first")
    for register in xmm ymm zmm; do
      [ "$(grep -cE "v?mul[sp]d.*$register" <<<"$listing")" -gt 0 ] || fail "no multiplication in $register: not the module"
    done
    ! grep -E '\bv?fn?m(add|sub)[0-9]*[sp][sd]\b|vfm(addsub|subadd)' <<<"$listing" || fail "fused multiply-add found"
    echo "$(wc -l <<<"$listing") lines of code, no fused multiply-add" ;;
  kernels)
    count=0
    while read -r object; do
      set=$(sed -E 's/.*tessarn_objects_([a-z0-9_]+)\.dir.*/\1/' <<<"$object")
      names=$("$(tool llvm-nm)" --defined-only "$object" | awk '{print $3}')
      [ -n "$names" ] || fail "$object defines nothing"
      # Constants are the same in every build, whichever of them the linker keeps.
      ! grep -vE "@$set@detail@tessarn@@|^__(real|xmm|ymm|zmm)@|^@feat\.00$|^\.|^\\\$" <<<"$names" || fail "in $object"
      count=$((count + 1))
    done <"$first"
    [ "$count" -gt 2 ] || fail "only $count objects"
    echo "$count kernel objects define their own namespace only" ;;
  baseline)
    while read -r object; do
      none_of "$object" "$(tool llvm-objdump)" -d --no-show-raw-insn "$object" "|" '%[yz]mm'
    done <"$first"
    [ "$(wc -l <"$first")" -gt 10 ] || fail "too few objects"
    echo "$(wc -l <"$first") objects without wide registers" ;;
  no_initialisers)
    while read -r object; do
      none_of "$object" "$(tool llvm-readobj)" --sections "$object" "|" 'Name: \.CRT\$X'
    done <"$first"
    [ "$(wc -l <"$first")" -gt 10 ] || fail "too few objects"
    echo "$(wc -l <"$first") objects without start-up code" ;;
  deleting_destructors)
    slots=$(while read -r object; do "$(tool llvm-objdump)" -r "$object"; done <"$first" | grep ADDR64 | grep -oE '\?\?_[EG][^ ]*' | sort -u)
    [ "$(grep -c '^??_E' <<<"$slots")" -ge 13 ] || fail "fewer virtual tables than classes"
    ! grep '^??_G' <<<"$slots" || fail "scalar deleting destructor in a virtual table"
    echo "$(wc -l <<<"$slots") virtual tables begin with the vector deleting destructor" ;;
  *) fail "unknown check: $what" ;;
esac
