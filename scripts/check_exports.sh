#!/usr/bin/env bash
# check_exports.sh LIBRARY: fails unless the library, ELF or PE, exports the function f alone.
set -euo pipefail
library=$1
case $library in
*.dll)
    exports=$(i686-w64-mingw32-objdump -p "$library" |
        sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] //p')
    ;;
*)
    # The weak symbols that a sanitizer's runtime looks for are not the library's own.
    exports=$(nm --dynamic --defined-only --format=posix "$library" | awk '$2 != "A" {print $1}')
    ;;
esac
if [ "$exports" != f ]; then
    printf '%s exports:\n%s\n' "$library" "$exports" >&2
    exit 1
fi
