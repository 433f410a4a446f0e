#!/bin/bash
# Inputs to begin with, one for each kind of thing that a target reads, and the words that it knows:
# make_seeds.sh BUILD-FOLDER TARGET FOLDER puts the inputs into FOLDER and the words into FOLDER.dict.
set -euo pipefail
build=$(realpath "$1")
target=$2
mkdir -p "$3"
folder=$(realpath "$3")
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/varnok-board" new "$work/board" >/dev/null
samples=$PWD/samples

# Every mode of RunProgram's table in front of a file.
with_modes() { # FILE
  local mode
  for mode in {0..23}; do
    # shellcheck disable=SC2059  # the format is the byte
    { printf "\\$(printf %o "$mode")"; cat "$1"; } >"$folder/$mode-$(basename "$1")"
  done
}
program_seed() { # NAME COMMAND-LINE [FILE [REST]]
  { printf '%s\036' "$2"; cat "${3:-/dev/null}"; printf '\036%b' "${4:-}"; } >"$folder/$1"
}
words() { # FILE...: the texts in quotes
  grep -ohE '"[A-Za-z_@/ .():0-9-]{2,40}"' "$@" | sort -u
}

words_none() { echo '# none'; }

case $target in
  program)
    for what in fru sdr smb 'fru IMBDEVICE 00' 'fru AT24C02 03 A0' 'fru IMBDEVICE C0 00'; do
      program_seed "show $what" "/d $what"
    done
    for file in "$samples"/*.[Ff][Rr][Uu]; do program_seed "$(basename "$file")" '/fru x' "$file"; done
    for file in "$samples"/*.[Ss][Dd][Rr]; do program_seed "$(basename "$file")" '/sdr x' "$file"; done
    for file in "$samples"/*.CFG; do
      program_seed "$(basename "$file")" '/cfg x.cfg' "$file" '\036\036\0361\ryyA1\ryA2\ry'
    done
    words cfg/*.cpp fru/*.cpp sdr/*.cpp app/*.cpp
    ;;
  script)
    for file in "$samples"/*.CFG; do
      { cat "$file"; printf '\0361\ryyA1\ryA2\ry'; } >"$folder/$(basename "$file")"
    done
    words cfg/*.cpp cfg/*.h
    ;;
  fru-file) cp "$samples"/*.[Ff][Rr][Uu] "$folder"; words fru/*.cpp fru/*.h ;;
  sdr-file) cp "$samples"/*.[Ss][Dd][Rr] "$folder"; words sdr/*.cpp sdr/*.h ;;
  fru-image) with_modes "$work/board/board.bin"; words_none ;;
  sdr-repository) with_modes "$work/board/sdr.bin"; words_none ;;
  smbios)
    printf '\002\010\000\001\001\002\003\004Maker\000Hearth S2d\000R1\000S1\000\000' >"$work/short"
    tail -c +33 "$work/board/smbios.bin" >"$work/table"
    with_modes "$work/short"
    with_modes "$work/table"
    words_none
    ;;
  command-line)
    for line in '/?' '/d smb' '/d fru IMBDEVICE C20 L00 FF 20' '/d fru AT24C02 03 A0' '/cfg' '/fru x' '-debug3 /d sdr'; do
      printf %s "$line" >"$folder/${line//\//_}"
    done
    words app/command_line.cpp app/services/trace.cpp fru/fru_command_line.cpp fru/nvs_type.h
    ;;
  bmc-answers)
    printf '\1\1\1\1\1\1\1\1\1\370\0\5abcde\201\242\303\344\360\372' >"$work/answers"
    with_modes "$work/answers"
    words_none
    ;;
  board-json) with_modes "$work/board/board.json"; words sim/*.cpp ;;
  formatter)
    printf 'word\0%%5s %%-8d %%ls %%02X %%c %%.3s%%%%' >"$folder/shapes"
    printf '%s\n' '"%02x"' '"%-8ls"' '"%hs"' '"%lc"' '"%+ld"' '"%#llX"' '"%.40s"' '"%99999999s"'
    ;;
  scanner)
    printf '%%2X.%%2X-%%2X.%%2X\0000A.1b-0xff.1' >"$folder/version"
    printf '%%d %%c%%s\000-12 x word' >"$folder/words"
    printf '%s\n' '"%2X"' '"%x"' '"%c"' '"%s"' '"%d"' '"0x"' '"4294967296"' '"-2147483649"'
    ;;
  kcs)
    # The idle state, then a status for every byte of a write, and an answer.
    printf '\0\0\0\0\200\200\200\200\200\200\200\101\034\101\001\101\000\101\040\001\000' >"$folder/exchange"
    head -c 64 /dev/zero | tr '\0' '\101' >"$folder/reading"
    printf '%s\n' '"\x41"' '"\xC0"' '"\x80\x80"' '"\x03"'
    ;;
  server)
    printf '\377\001\241\010\077\241\000\030\001\347\240' >"$folder/identity"
    printf '\001\050\043\264\240\002\050\020\000\306\240\003\050\021\000\000\000\010\274\240' >"$folder/storage"
    printf '%s\n' '"\xA0"' '"\xA1"' '"\xAA\xB0"' '"\x18\x01"' '"\x28\x12"' '"\x18\x34"'
    ;;
  companion)
    cp "$work"/board/* "$samples"/*.* "$work"
    printf 'Device ID                 : 32\nFirmware Revision         : 2.61\nManufacturer ID           : 343\nProduct ID                : 17169 (0x4311)\n' >"$work/identity"
    with_modes "$work/board.bin"
    with_modes "$work/sdr.bin"
    with_modes "$work/smbios.bin"
    with_modes "$work/board.json"
    with_modes "$work/identity"
    VARNOK_BOARD=$work/board VARNOK_TRAFFIC=$work/log "$build/varnok" /d smb >/dev/null 2>&1
    with_modes "$work/log"
    for file in "$samples"/MASTER.CFG "$samples"/server-board.*; do with_modes "$file"; done
    words boards/*.cpp sim/board_config.cpp cfg/command_table.cpp fru/fru_file.cpp sdr/file_keys.h
    ;;
  start-cfg)
    printf 'TITLE "Hearth S2"\r\nENTRY "Run // it" VARNOK /cfg MASTER.CFG // the package\nENTRY "Back" RESTORE\nENTRY "x" PAGE A.TXT\nRUN 1 AFTER 10\n' >"$folder/menu"
    words programs/start/menu_file.cpp
    ;;
  answer-file)
    printf '# by hand\n"Which chassis is it?" = 1\nline 12 = Y\nPROBE SYSTEM = failing\n* value = "A=1"\n* = n\n' >"$folder/answers"
    words rehearsal/answers.cpp
    ;;
  *) echo "make_seeds.sh: $target has no seeds" >&2; exit 1 ;;
esac >"$folder.dict"
