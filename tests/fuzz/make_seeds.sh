#!/bin/sh
# Seeds for program_fuzz: every kind of run once, the files from the samples. make_seeds.sh FOLDER SAMPLES
set -eu
folder=$1
samples=$2
mkdir -p "$folder"

seed() { # NAME COMMAND-LINE [FILE [REST]]
  { printf '%s\036' "$2"; cat "${3:-/dev/null}"; printf '\036%b' "${4:-}"; } >"$folder/$1"
}

seed help '/?'
for what in fru sdr smb 'fru IMBDEVICE 00' 'fru AT24C02 03 A0' 'fru IMBDEVICE C0 00'; do
  seed "show $what" "/d $what"
done
for file in "$samples"/*.[Ff][Rr][Uu]; do seed "$(basename "$file")" '/fru x' "$file"; done
for file in "$samples"/*.[Ss][Dd][Rr]; do seed "$(basename "$file")" '/sdr x' "$file"; done
for file in "$samples"/*.CFG; do seed "$(basename "$file")" '/cfg x.cfg' "$file" '\036\036\0361\ryyA1\ryA2\ry'; done
seed smbios '/d smb' /dev/null '\036\036\002\010\000\001\001\002\003\004Maker\000Hearth S2d\000R1\000S1\000\000'
