#!/usr/bin/env bash
# Installs a build under a path with a blank, runs the example jobs with it, and requires the summary lines that the
# READMEs show: examples_run.sh BUILD_FOLDER. Called by ctest.
set -eu
build=$1
cd "$(dirname "$0")/.."
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cmake --install "$build" --prefix "$folder/a prefix" >/dev/null

wrong=0
# Requires each summary line of a report in a page: compare REPORT PAGE
compare() {
  local lines
  lines=$(grep -o '2520[1-5] : .*' "$1") && [ "$(wc -l <<<"$lines")" -eq 5 ] || {
    echo "$1 has no summary of five lines" >&2
    exit 1
  }
  while read -r line; do
    grep -qF "$line" "$2" || { echo "$2 does not show: $line" >&2 && wrong=1; }
  done <<<"$lines"
}

for part in plate ribbed; do
  for job in "$part" "$part-wedge"; do
    for file in "examples/$part/$part".*; do cp "$file" "$folder/$job.${file##*.}"; done
    cp "examples/$part/$job.CPU" "$folder/$job.CPU"
    "$folder/a prefix/bin/keld" "$folder/$job" 1@ "$folder/a prefix/share/keld/" 2@ </dev/null >/dev/null
    [ -s "$folder/$job.WR1" ]
    compare "$folder/$job.WD1" "examples/$part/README.md"
  done
done
compare "$folder/ribbed.WD1" README.md
exit "$wrong"
