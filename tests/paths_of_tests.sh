#!/usr/bin/env bash
# Every unit test stands by the path of its source: tests/unit/A/b_test.cpp tests src/A/b or tools/b; a second file on
# one source adds what it is about, as in b_subject_test.cpp.
set -eu
cd "$(dirname "$0")/.."
lost=0
while IFS= read -r test; do
  stem=${test#tests/unit/}
  stem=${stem%_test.cpp}
  until compgen -G "src/$stem.*" >/dev/null || compgen -G "$stem.*" >/dev/null; do
    shorter=${stem%_*}
    if [ "$shorter" = "$stem" ] || [ "${shorter%/*}" != "${stem%/*}" ]; then
      echo "$test: no source by this path" >&2
      lost=1
      break
    fi
    stem=$shorter
  done
done < <(find tests/unit -name '*_test.cpp' | sort)
exit "$lost"
