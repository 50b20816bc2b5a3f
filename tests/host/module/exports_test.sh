#!/usr/bin/env bash
# Checks that a shared library exports exactly the named functions and nothing else.
#   exports_test.sh LIBRARY NAME...
set -euo pipefail
library=$1
shift
expected=$(printf '%s\n' "$@" | sort)
actual=$(nm -D --defined-only "$library" | awk '{print $3}' | sort)
if [ "$actual" != "$expected" ]; then
  echo "exports of $library:"
  diff <(echo "$expected") <(echo "$actual") || true
  exit 1
fi
echo "$library exports exactly: $*"
